// The web service's whole answer, HTTP and XML, to each operation; and the request before it.

#include "tests/fuzz/reference.h"
#include "tests/fuzz/service.h"
#include "tests/fuzz/service_request.h"
#include "tests/fuzz/target.h"
#include "webservice/soapcallsclientutil.h"

#include <cerrno>

/// The status text that the dispatcher took from the answer passes by here.
int read_result_text(const char *text) asm("__wrap__Z18extract_error_codePKc");
int really_read_result_text(const char *text) asm("__real__Z18extract_error_codePKc");

/// The runtime copies the identifier of an element that bears it twice onto itself, byte by byte.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the sanitizer names it
extern "C" const char *__asan_default_suppressions() {
    return "interceptor_via_fun:soap_id_enter\n";
}

namespace {

/// What was passed by; no text inside is a null one.
struct result_text {
    int times;
    std::optional<std::string> text;
};
result_text passed;

} // namespace

int read_result_text(const char *text) {
    passed.times++;
    passed.text = text == nullptr ? std::nullopt : std::optional<std::string>(text);
    return really_read_result_text(text);
}

namespace {

using fuzz::input;
using fuzz::outcome;
using fuzz::peer_script;
using fuzz::require;
using fuzz::require_equal;
using protocol::line_group;
using protocol::service_row;
using service::request;

/// What holds of every run that was not refused for its list.
void check_run(const request &wanted, const peer_script &script, const outcome &seen) {
    require_equal("memory of the runtime left", static_cast<long>(seen.unreleased_malloc), 0);
    require_equal("connections closed", seen.peer.closed, seen.peer.opened);
    require(seen.report.empty() || seen.report.starts_with("SOAP 1.") ||
                seen.report.starts_with("Error "),
            "report is one of the runtime");
    // No answer makes a report begin so.
    const bool is_refused = seen.report.starts_with("Error 3986 fault ");
    require(!is_refused || wanted.any_url, "url can be used");
    require(is_refused || !service::must_be_refused(wanted), "url cannot be used");
    require(seen.report.empty() || !passed.text, "a failed call has no result");
    if (script.socket_error == 0) {
        require_equal("connections", seen.peer.opened, wanted.is_sent && !is_refused ? 1 : 0);
    }
    if (seen.peer.opened == 1 && script.connect_error == 0 && script.send_error == 0) {
        service::check_sent(wanted, seen.peer.sent);
    } else {
        require_equal("request", seen.peer.sent, "");
    }
    // The status is what the result text says, or 508 where there must be one.
    if (passed.times == 0) {
        require_equal("status without a result", seen.value, 508);
        require(wanted.called->group == line_group::WITH_A_RESULT, "operation must have a result");
        return;
    }
    require_equal("result texts", passed.times, 1);
    require(passed.text.has_value() || wanted.called->group != line_group::WITH_A_RESULT,
            "a record without a result is not read");
    require_equal("status", seen.value, reference::read_status(passed.text).code);
}

/// The answer of a scene, as far as it is known what it says.
struct scene_answer {
    service::proper_answer response = {}; ///< without its bytes
    bool is_known = false;                ///< false: the fields may be anything
    bool is_whole = true;                 ///< false: what is behind some place never came
    bool fails = false;                   ///< the call must fail
};

/// The lines of a run, with the fields that are known.
std::string lines_of(const request &wanted, const scene_answer &answer) {
    std::string text;
    for (const protocol::result_line &line : wanted.called->lines) {
        std::string shown = std::string("[lumocmd] ") + line.text;
        const auto field = answer.response.fields.find(line.field);
        if (field != answer.response.fields.end() && field->second) {
            shown += *field->second;
        } else if (*line.suffix == '\0') {
            shown += "(null)";
        }
        text += fuzz::green(shown.append(line.suffix));
    }
    return text;
}

/// The place behind the last line, whatever the fields say.
std::size_t end_of_lines(const request &wanted, const std::string &output) {
    std::size_t at = 0;
    for (const protocol::result_line &line : wanted.called->lines) {
        const std::string shown = fuzz::green(std::string("[lumocmd] ") + line.text);
        const std::string opening = shown.substr(0, shown.rfind("\033[0;39m"));
        at = output.find(opening, at);
        require(at != std::string::npos, "lines stand in their order");
        at += opening.size();
    }
    return at;
}

void check_lines(const request &wanted, const outcome &seen, const scene_answer &answer) {
    const std::string &output = seen.output;
    const std::string message = reference::read_status(passed.text).message;
    const std::string tail = message.empty() ? "" : fuzz::red(wanted.verbose, message);
    const bool has_lines = wanted.verbose && passed.times == 1;
    if (!seen.report.empty()) {
        require_equal("output", output, has_lines ? lines_of(wanted, {}) : "");
        return;
    }
    if (answer.is_known && answer.is_whole) {
        require_equal("output", output, (has_lines ? lines_of(wanted, answer) : "") + tail);
        return;
    }
    const std::size_t end = has_lines ? end_of_lines(wanted, output) : 0;
    require(output.size() >= end + tail.size() && output.ends_with(tail),
            "message about the result");
    require(end != 0 || output == tail, "nothing but the lines is shown");
}

enum scene {
    ANY_ANSWER,
    ANY_BODY,
    ANY_CONTENT,
    ANY_CHILDREN,
    PROPER_RESPONSE,
    FAULT,
    NO_SOCKET,
    NO_CONNECTION,
    SEND_FAILS,
    RECEIVE_FAILS,
    CUT_RESPONSE,
    SCENES
};

constexpr char REASON[] = "the reason";

std::string any_children(const service_row &called, input *in) {
    const std::string name = "ns:service-" + std::string(called.name) + "Response";
    return "<" + name + ">" + in->field() + "</" + name + ">";
}

scene_answer set_scene(std::size_t scene, const service_row &called, input *in,
                       peer_script *script) {
    using service::envelope;
    using service::http_answer;
    switch (scene) {
    case ANY_ANSWER:
        script->answer = in->rest();
        return {};
    case ANY_BODY:
        script->answer = http_answer(in->field(), in);
        return {};
    case ANY_CONTENT:
        script->answer = http_answer(envelope(in->field()), in);
        return {};
    case ANY_CHILDREN:
        script->answer = http_answer(envelope(any_children(called, in)), in);
        return {};
    case PROPER_RESPONSE:
    case CUT_RESPONSE: {
        scene_answer answer = {.is_known = true, .is_whole = scene == PROPER_RESPONSE};
        answer.response = service::write_response(called, in);
        script->answer = http_answer(envelope(answer.response.bytes), in);
        if (!answer.is_whole) {
            const std::size_t left = in->byte() * std::size_t{256} + in->byte();
            script->answer.resize(left % script->answer.size());
        }
        return answer;
    }
    case FAULT:
        script->answer = http_answer(envelope(service::write_fault(in, REASON)), in);
        break;
    case NO_SOCKET:
        script->socket_error = EMFILE;
        break;
    case NO_CONNECTION:
        script->connect_error = ECONNREFUSED;
        break;
    case SEND_FAILS:
        script->send_error = EPIPE;
        break;
    default:
        script->receive_error = ECONNRESET;
    }
    return {.is_known = true, .fails = true};
}

/// The result must be the answer's own, and failures be reported.
void check_answer(const request &wanted, std::size_t scene, const scene_answer &answer,
                  const outcome &seen) {
    if (answer.fails) {
        require(!seen.report.empty(), "failure is reported");
        require(scene != FAULT || seen.report.find(REASON) != std::string::npos,
                "reason of the fault is reported");
        return;
    }
    const auto found = answer.response.fields.find(protocol::result_child(*wanted.called));
    const bool has_result = found != answer.response.fields.end() && found->second.has_value();
    const std::string result = has_result ? *found->second : "(none)";
    if (answer.is_whole) {
        require_equal("report", seen.report, "");
        require_equal("result text", passed.text.value_or("(none)"), result);
    } else if (seen.report.empty()) {
        require_equal("result of a message that came whole", passed.text.value_or("(none)"),
                      result);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    input in(data, size);
    const std::size_t scene = in.below(SCENES);
    const request wanted = service::take_request(&in);
    peer_script script;
    // Odd: in as few pieces as possible.
    const std::size_t piece = in.byte();
    script.most_received = piece % 2 == 1 ? SIZE_MAX : 1 + piece;
    scene_answer answer = set_scene(scene, *wanted.called, &in, &script);
    answer.is_known = answer.is_known && !wanted.any_url;
    if (!wanted.is_sent) {
        answer.response.fields.clear();
    }
    passed = {};
    const fuzz::exact_text url(wanted.url.value_or(""));
    const fuzz::exact_text parameters(wanted.parameters);
    const outcome seen = fuzz::run_product(script, wanted.verbose, [&] {
        return make_webservice_request(wanted.url ? url.get() : nullptr, wanted.function.c_str(),
                                       parameters.get(), wanted.waittime);
    });
    if (!wanted.has_proper_count) {
        require_equal("status", seen.value, 505);
        require_equal("connections", seen.peer.opened, 0);
        require_equal("output", seen.output,
                      fuzz::red(wanted.verbose, protocol::count_message(*wanted.called)));
        return 0;
    }
    check_run(wanted, script, seen);
    check_lines(wanted, seen, answer);
    if (answer.is_known && wanted.is_sent) {
        check_answer(wanted, scene, answer, seen);
    }
    return 0;
}
