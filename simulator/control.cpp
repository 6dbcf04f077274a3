// What the page asks for: an event for every change, the bytes of a request, and changes of the
// home and of what the daemons are told.
#include "simulator/operations.h"
#include "simulator/page.h"
#include "simulator/session.h"
#include "simulator/text.h"

#include <boost/algorithm/string/predicate.hpp>
#include <nlohmann/json.hpp>

namespace {

/// The options that the page can give to a running daemon; the others belong to the start.
constexpr std::string_view TOLD_WHILE_RUNNING[] = {"--answer", "--delay", "--close", "--refuse"};

void note(simulator_server &server, const daemon_row &daemon, const std::string &words) {
    print_note(daemon, "told on the page: " + words);
    server.bench.journal.watch();
}

const char *switched(std::string_view status) {
    return status == "ON"       ? "OFF"
           : status == "OPEN"   ? "CLOSED"
           : status == "CLOSED" ? "OPEN"
                                : "ON";
}

/// Switches the element of this key. A value of 0 or 1, ON or OFF is the switch itself and follows;
/// any other stays.
std::string switch_element(simulator_server &server, const std::string &key) {
    home_state &home = server.bench.home;
    const auto found = std::ranges::find(home.elements, key,
                                         [](const auto &row) { return element_key(row.first); });
    if (found == home.elements.end()) {
        return "no such element";
    }
    home_element now{switched(found->second.status), found->second.value};
    if (now.value == "0" || now.value == "1") {
        now.value = now.status == "ON" || now.status == "OPEN" ? "1" : "0";
    } else if (boost::iequals(now.value, "on") || boost::iequals(now.value, "off")) {
        now.value = now.status;
    }
    change_element(home, found->first, now);
    note(server, DAEMONS.back(), show_value(found->first) + " " + now.status + " " + now.value);
    return "";
}

/// Puts into effect what a daemon is told, in place of all that it was told before.
std::string tell(simulator_server &server, const daemon_row &daemon, const told_behaviour &told) {
    test_bench &bench = server.bench;
    const std::size_t row = row_of(daemon);
    daemon_listener &listener = server.listeners.rows[row];
    const bool refused = bench.settings.behaviours[row].refusals > bench.turns[row].refusals;
    if (told.refusals != 0 && listener.path.empty()) {
        return "this page comes from here; let it close its requests instead";
    }
    listener.orders++;
    bench.settings.behaviours[row] = told;
    bench.turns[row] = {};
    bench.home.statuses_given.erase(daemon.key);
    if (told.refusals != 0) {
        if (!stop_listening(server.loop, listener, told.refusals != FOR_EVER)) {
            bench.settings.behaviours[row] = {};
            listen_again(listener);
            follow_refusals(server, listener);
            return "the socket cannot refuse, or its file system cannot count: " + listener.path;
        }
        follow_refusals(server, listener);
    } else if (refused) {
        listen_again(listener);
        follow_refusals(server, listener);
    }
    const std::string words = told_words(bench, daemon);
    note(server, daemon, words.empty() ? "nothing any more" : words);
    return "";
}

/// Reads what a daemon is told: an option, its argument, and whether the next request alone is
/// meant; no option takes back what it was told.
std::string tell_daemon(simulator_server &server, const nlohmann::json &wish) {
    const daemon_row *daemon = find_daemon(wish.at("daemon").get<std::string>());
    if (daemon == nullptr) {
        return "no such daemon";
    }
    told_behaviour told;
    const auto option_name = wish.value("option", std::string());
    if (!option_name.empty()) {
        if (std::ranges::find(TOLD_WHILE_RUNNING, option_name) == std::end(TOLD_WHILE_RUNNING)) {
            return "no option for a daemon that runs";
        }
        const auto option = std::ranges::find(OPTIONS, option_name, &option_row::name);
        std::string complaint = option->tell(told, wish.value("argument", std::string()));
        if (!complaint.empty()) {
            return complaint;
        }
        if (wish.value("once", false)) {
            told.answers = 1;
            told.delays = 1;
            told.closes = std::min(told.closes, 1);
            told.refusals = std::min(told.refusals, 1);
        }
    }
    return tell(server, *daemon, told);
}

/// Carries out what the page asks for. Returns what is wrong with it, empty when nothing is.
std::string carry_out(simulator_server &server, const std::string &body) {
    try {
        const auto wish = nlohmann::json::parse(body);
        return wish.contains("element") ? switch_element(server, wish["element"])
                                        : tell_daemon(server, wish);
    } catch (const nlohmann::json::exception &error) {
        return error.what();
    }
}

/// How often pages that disappeared without closing are looked for.
constexpr std::chrono::milliseconds STILL_HERE_TIME{15000};
constexpr std::chrono::milliseconds NO_TIME{0};

void next_event(const session_ptr &session) {
    session->idle = true;
    wait(session->client, session->changed ? NO_TIME : STILL_HERE_TIME, [session]() {
        session->idle = false;
        if (session->left || session->server.loop.stopping) {
            end_connection(session->client);
            return;
        }
        const bool changed = std::exchange(session->changed, false);
        send_all(session->client,
                 changed ? picture_event(session->server.bench, session->seen) : STILL_HERE,
                 [session](bool sent) {
                     session->left = session->left || !sent;
                     next_event(session);
                 });
    });
}

} // namespace

void answer_bench(const session_ptr &session) {
    simulator_server &server = session->server;
    const passed_request &web = session->conversation.exchange.web;
    if (web.path == CONTROL_PATH) {
        const std::string complaint = carry_out(server, web.body);
        send_last(session, write_http(complaint.empty() ? 200 : 400, complaint, true));
    } else {
        const auto details =
            request_details(server.bench, web.path.substr(std::strlen(DETAILS_PATH)));
        send_last(session,
                  write_http(details ? 200 : 404, details.value_or(""), web.method != "HEAD"));
    }
}

void stream_events(const session_ptr &session) {
    if (session->conversation.exchange.web.method == "HEAD") {
        send_last(session, STREAM_HEAD);
        return;
    }
    // A watcher has nothing more to say: what arrives is the end of its connection.
    session->client->socket.async_wait(asio::socket_base::wait_read, [session](const error_code &) {
        session->left = true;
        session->client->timer.cancel();
        session->client->socket.cancel();
    });
    send_all(session->client, STREAM_HEAD + picture_event(session->server.bench, session->seen),
             [session](bool sent) {
                 session->left = session->left || !sent;
                 next_event(session);
             });
}
