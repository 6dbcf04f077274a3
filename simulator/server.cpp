// Listens for all daemons, serves their clients, and applies what the daemons were told to do
// instead of answering properly. One thread serves all: each step of a conversation starts an
// operation that calls the next step when it is done. Pending operations keep their session alive;
// the last one closes it.
#include "simulator/forward.h"
#include "simulator/session.h"

#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <random>

namespace {

/// Further connections are closed without an answer.
constexpr std::size_t MOST_CONNECTIONS = 256;

/// Pause after a failed accept, which is most likely a lack of descriptors.
constexpr std::chrono::milliseconds ACCEPT_PAUSE{100};

void print_raw(const client_session &session, std::string_view direction, std::string_view bytes) {
    if (session.server.bench.settings.raw && !bytes.empty()) {
        print_bytes(session.conversation.daemon, direction, bytes);
    }
}

/// The line is printed before the answer goes out, so that a client that has its answer finds the
/// line.
void finish(const session_ptr &session) {
    const daemon_row &daemon = session->conversation.daemon;
    const exchange_result &exchange = session->conversation.exchange;
    add_entry(session->server.bench.journal,
              {&daemon, exchange.request, exchange.outcome, exchange.answer,
               std::string(session->conversation.received)});
    if (!exchange.answer) {
        end_connection(session->client);
        return;
    }
    print_raw(*session, "->", *exchange.answer);
    send_all(session->client, *exchange.answer, [session](bool sent) {
        if (!sent) {
            print_note(session->conversation.daemon, "the client did not take its answer");
        }
        end_connection(session->client);
    });
}

/// Replaces the answer as the daemon was told; replay and forwarding apply where it was told
/// nothing.
void choose_answer(const session_ptr &session) {
    test_bench &bench = session->server.bench;
    const daemon_row &daemon = session->conversation.daemon;
    const told_behaviour &told = session->conversation.behaviour;
    exchange_result &exchange = session->conversation.exchange;
    session->server.at_work = &daemon;
    if (told.delay > 0 && session->turn <= told.delays && session->server.loop.stopping) {
        exchange = {exchange.request, "not answered, the simulator shuts down", {}};
    } else if (session->turn <= told.closes) {
        exchange.outcome = CLOSED;
        exchange.answer.reset();
    } else if (told.raw) {
        exchange.answer = *told.raw;
        exchange.outcome = std::to_string(told.raw->size()) + " raw bytes";
    } else if (told.statuses.empty() && !bench.replay.list.empty()) {
        replay_answer(bench.replay, daemon, exchange);
    } else if (told.statuses.empty() && is_forwarded(bench.settings, daemon)) {
        forward_request(session->server.loop, bench.settings, session->conversation,
                        [session]() { finish(session); });
        return;
    }
    finish(session);
}

void answer(const session_ptr &session, arrival_kind arrival) {
    daemon_conversation &conversation = session->conversation;
    conversation.received = session->client->received;
    conversation.arrival = arrival;
    if (conversation.received.empty() || arrival == arrival_kind::STOPPED) {
        print_note(conversation.daemon, std::string("no request, ") + describe_arrival(arrival));
        end_connection(session->client);
        return;
    }
    conversation.daemon.answer(conversation);
    if (conversation.exchange.audience == audience_kind::EVENTS) {
        stream_events(session);
    } else if (conversation.exchange.audience == audience_kind::BENCH) {
        answer_bench(session);
    } else if (conversation.exchange.audience == audience_kind::STRANGER) {
        finish(session); // as it is: it must not reach what a real controller answers
    } else if (conversation.exchange.audience == audience_kind::PAGE) {
        send_last(session, *conversation.exchange.answer);
    } else {
        print_raw(*session, "<-", conversation.received);
        const told_behaviour &told = conversation.behaviour;
        session->turn = ++session->server.bench.turns[row_of(conversation.daemon)].requests;
        wait(session->client,
             std::chrono::milliseconds(session->turn <= told.delays ? told.delay : 0),
             [session]() { choose_answer(session); });
    }
}

void read_request(const session_ptr &session) {
    receive_some(session->client, [session](arrival_kind arrival) {
        const daemon_row &daemon = session->conversation.daemon;
        session->server.at_work = &daemon;
        const request_progress progress = arrival == arrival_kind::DATA
                                              ? daemon.progress(session->client->received)
                                              : request_progress::WHOLE;
        if (progress == request_progress::AWAITS_CONTINUE && !session->told_to_continue) {
            session->told_to_continue = true;
            send_all(session->client, "HTTP/1.1 100 Continue\r\n\r\n",
                     [session](bool /*sent*/) { read_request(session); });
        } else if (progress != request_progress::WHOLE) {
            read_request(session);
        } else {
            if (arrival == arrival_kind::DATA) {
                receive_pending(*session->client);
            }
            answer(session, arrival);
        }
    });
}

void accept_next(simulator_server &server, daemon_listener &listener) {
    if (server.loop.stopping) {
        return;
    }
    listener.acceptor.async_accept([&](const error_code &error, stream_socket socket) {
        if (server.loop.stopping || error == asio::error::operation_aborted) {
            return; // aborted where it was told to refuse
        }
        if (error) {
            const auto pause = std::make_shared<loop_timer>(server.loop.context, ACCEPT_PAUSE);
            pause->async_wait([&, pause](const error_code &) { accept_next(server, listener); });
            return;
        }
        accept_next(server, listener);
        if (server.sessions.size() < MOST_CONNECTIONS) {
            read_request(
                std::make_shared<client_session>(server, *listener.daemon, std::move(socket)));
        } else {
            print_note(*listener.daemon, "too many connections, one closed");
        }
    });
}

/// A text that nobody can guess.
std::string random_token() {
    std::random_device source;
    std::array<char, 33> text{};
    for (std::size_t i = 0; i < 32; i += 8) {
        std::snprintf(&text[i], 9, "%08x", source());
    }
    return text.data();
}

/// Serves until a signal comes, with a command until its end: the other signals are passed on to
/// it.
void await_end(simulator_server &server, asio::signal_set &signals) {
    signals.async_wait([&server, &signals](const error_code &, int number) {
        script_run &script = server.bench.script;
        if (script.pid != 0 && !take_signal(script, number)) {
            await_end(server, signals);
            return;
        }
        for (daemon_listener &row : server.listeners.rows) {
            row.acceptor.cancel();
        }
        stop_waiting(server.loop);
    });
}

/// Signals that would end the simulator before its command; not those that nohup has it ignore.
void add_ends(asio::signal_set &signals) {
    for (const int number : {SIGHUP, SIGQUIT}) {
        struct sigaction now = {};
        if (sigaction(number, nullptr, &now) == 0 && now.sa_handler != SIG_IGN) {
            signals.add(number);
        }
    }
}

/// Lack of memory for one connection must not end the others.
void run(simulator_server &server) {
    while (!server.loop.context.stopped()) {
        try {
            server.loop.context.run();
        } catch (const std::exception &error) {
            print_note(*server.at_work, std::string("connection dropped: ") + error.what());
        }
    }
}

} // namespace

void follow_refusals(simulator_server &server, daemon_listener &listener) {
    test_bench &bench = server.bench;
    const std::size_t row = row_of(*listener.daemon);
    const int refusals = bench.settings.behaviours[row].refusals;
    if (refusals == 0) {
        accept_next(server, listener);
    } else if (refusals != FOR_EVER) {
        refuse_connections(
            server.loop, listener, refusals,
            [&bench, row]() {
                bench.turns[row].refusals++;
                show_entry(bench.journal,
                           {&DAEMONS[row], "a connection", std::string(REFUSED), {}});
            },
            [&server, &listener]() {
                print_note(*listener.daemon, "listens from now on");
                accept_next(server, listener);
            });
    }
}

std::string serve(test_bench &bench) {
    const simulator_settings &settings = bench.settings;
    simulator_server server{bench};
    asio::signal_set signals(server.loop.context, SIGINT, SIGTERM);
    if (!settings.script.empty()) {
        signals.add(SIGCHLD);
        add_ends(signals);
    }
    std::string complaint = open_listeners(server.loop, settings, server.listeners);
    if (!complaint.empty()) {
        return complaint;
    }
    bench.home.origin = server.listeners.origin;
    bench.home.token = random_token();
    complaint = announce_listeners(settings, server.listeners, bench.places);
    if (!complaint.empty()) {
        close_listeners(server.listeners);
        return complaint;
    }
    bench.journal.watch = [&server]() {
        for (client_session *session : server.sessions) {
            session->changed = true;
            if (session->idle) {
                session->client->timer.cancel();
            }
        }
    };
    for (daemon_listener &row : server.listeners.rows) {
        follow_refusals(server, row);
    }
    if (!settings.script.empty()) {
        complaint =
            start_script(bench.script, settings.script, settings.directory, bench.places.back());
    }
    if (complaint.empty()) {
        await_end(server, signals);
        run(server);
    }
    close_listeners(server.listeners);
    if (!settings.ready_file.empty()) {
        std::remove(settings.ready_file.c_str());
    }
    return complaint;
}
