// Status texts, numbers, lines, cutters and copies: the small readers and writers of texts.

#include "front/memory.h"
#include "front/number_text.h"
#include "front/utility.h"
#include "fuzz/reference.h"
#include "fuzz/target.h"

#include <cerrno>
#include <cstring>

namespace {

using fuzz::exact_text;
using fuzz::input;
using fuzz::outcome;
using fuzz::red;
using fuzz::require;
using fuzz::require_equal;

/// Everything that a call writes, when it may write but this.
void require_silent_but(const outcome &seen, const std::string &message) {
    require_equal("output", seen.output, message.empty() ? "" : red(false, message));
    require_equal("report", seen.report, "");
}

void check_status_text(input in) {
    const int code = in.number();
    std::string text;
    fuzz::run_product({}, false, [&] {
        char *formatted = format_status_code(code);
        text = formatted;
        xfree(formatted);
        return 0;
    });
    require_equal("status text", text, reference::status_text(code));
    // A text with a prefix of four letters and at most four digits is read back.
    if (text.size() <= 9 && text[4] == '-') {
        int read = 0;
        fuzz::run_product({}, false, [&] { return read = extract_error_code(text.c_str()); });
        require_equal("status read back", read, code);
    }
}

void check_status_reading(input in) {
    const exact_text text(in.field());
    const reference::status wanted = reference::read_status(text.get());
    const outcome seen =
        fuzz::run_product({}, false, [&] { return extract_error_code(text.get()); });
    require_equal("status", seen.value, wanted.code);
    require_silent_but(seen, wanted.message);
}

void check_number(input in) {
    const exact_text text(in.field());
    const reference::number wanted = reference::read_number(text.get());
    int value = -1;
    const bool is_valid = read_number(text.get(), &value);
    const int error = errno;
    require_equal("number is valid", is_valid, wanted.is_valid);
    // What was read before a character too many is kept as well.
    require_equal("number", value, wanted.value);
    require(is_valid || strerror(error) == wanted.error, "error of the number");
}

using reference::cutter;
struct cutter_row {
    cutter kind;
    void (*cut)(char *, std::size_t);
};
const cutter_row CUTTERS[] = {{cutter::PRESERVE_NEWLINE, cut_message_to_preserve_newline},
                              {cutter::TRIM_NEWLINE, cut_message_to_trim_newline},
                              {cutter::PARAMETER, cutparamto},
                              {cutter::QUERY_PARAMETER, cutqueryparamto}};

void check_cutter(input in) {
    const cutter_row &row = CUTTERS[in.below(std::size(CUTTERS))];
    // 255 stands for the largest length there is.
    const std::uint8_t byte = in.byte();
    const std::size_t length = byte == UINT8_MAX ? SIZE_MAX : byte;
    const exact_text text(in.field());
    const reference::cut wanted = reference::cut_text(row.kind, text.get(), length);
    const outcome seen = fuzz::run_product({}, false, [&] {
        row.cut(text.get(), length);
        return 0;
    });
    require_equal("text that is left", text.get(), wanted.text);
    require_silent_but(seen, wanted.message);
}

/// A copy that the product made, taken over.
std::string taken(char *copy) {
    std::string text = copy;
    xfree(copy);
    return text;
}

/// A source that the product may free itself.
char *owned(const std::string &text) {
    return xstrdup(nullptr, text.c_str());
}

void check_copies(input in) {
    const std::size_t count = in.byte();
    const int release = in.byte() % 2;
    const exact_text first(in.field());
    const exact_text second(in.field());
    const std::string whole = first.get();
    const std::string both = whole + second.get();
    fuzz::run_product({}, false, [&] {
        require_equal("xstrdup", taken(xstrdup(nullptr, first.get())), whole);
        require_equal("xstrndup", taken(xstrndup(nullptr, first.get(), count)),
                      whole.substr(0, count));
        require_equal("xstrconcat", taken(xstrconcat(first.get(), second.get())), both);
        require_equal("xstrconcat of null", taken(xstrconcat(nullptr, second.get())), second.get());
        char *source = owned(whole);
        require_equal("xstrdup_free", taken(xstrdup_free(source, release)), whole);
        source = release != 0 ? owned(whole) : source;
        require_equal("xstrndup_free", taken(xstrndup_free(source, count, release)),
                      whole.substr(0, count));
        require_equal("xstrconcat_free",
                      taken(xstrconcat_free(owned(whole), owned(second.get()), 1, release)), both);
        return 0;
    });
}

void (*const CHECKS[])(input) = {check_status_text, check_status_reading, check_number,
                                 check_cutter, check_copies};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    input in(data, size);
    CHECKS[in.below(std::size(CHECKS))](in);
    return 0;
}
