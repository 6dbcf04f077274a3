// One thread does everything: each step of a conversation ends with an operation that calls the
// next step when it is done. What is under way keeps its session alive; the last one closes it.
#include "simulator/server.h"

#include "simulator/forward.h"
#include "simulator/http_front.h"
#include "simulator/listeners.h"
#include "simulator/page.h"
#include "simulator/text.h"

#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <cstdio>

namespace {

/// More connections at once than this are closed unserved.
constexpr std::size_t MOST_CONNECTIONS = 256;

/// Pause after a failed accept, which is most likely a lack of descriptors.
constexpr std::chrono::milliseconds ACCEPT_PAUSE{100};

/// How often a watcher that went away without a word is noticed.
constexpr std::chrono::milliseconds STILL_HERE_TIME{15000};
constexpr std::chrono::milliseconds NO_TIME{0};

struct simulator_server {
    test_bench &bench;
    event_loop loop = {};
    listener_set listeners = {};
    std::set<struct client_session *> sessions = {};
    const daemon_row *at_work = DAEMONS.data(); ///< what an exception is blamed on
};

/// One client of a daemon.
struct client_session {
    client_session(simulator_server &serving, const daemon_row &daemon, stream_socket socket)
        : server(serving), client(std::make_shared<stream_connection>(
                               serving.loop, std::move(socket), daemon.limit,
                               std::chrono::milliseconds(serving.bench.settings.patience))),
          conversation{daemon, serving.bench.settings.behaviours[row_of(daemon)],
                       serving.bench.home} {
        server.sessions.insert(this);
    }

    ~client_session() {
        server.sessions.erase(this);
    }

    client_session(const client_session &) = delete;
    client_session &operator=(const client_session &) = delete;

    simulator_server &server;
    connection_ptr client;
    daemon_conversation conversation;
    bool told_to_continue = false;
    bool idle = false;    ///< a watcher that waits for something to see
    bool changed = false; ///< and has not seen the last change
    bool left = false;
};

using session_ptr = std::shared_ptr<client_session>;

void print_note(const daemon_row &daemon, const std::string &text) {
    print_log({"note", daemon.key, std::string(daemon.label) + ": " + text, {{"text", text}}});
}

void print_raw(const client_session &session, std::string_view direction, std::string_view bytes) {
    if (session.server.bench.settings.raw && !bytes.empty()) {
        const daemon_row &daemon = session.conversation.daemon;
        print_log({"bytes",
                   daemon.key,
                   bytes_words(daemon, direction, bytes),
                   {{"direction", std::string(direction)}, {"bytes", quote_bytes(bytes)}}});
    }
}

void next_event(const session_ptr &session) {
    session->idle = true;
    wait(session->client, session->changed ? NO_TIME : STILL_HERE_TIME, [session]() {
        session->idle = false;
        if (session->left || session->server.loop.stopping) {
            end_connection(session->client);
            return;
        }
        const bool changed = std::exchange(session->changed, false);
        send_all(session->client, changed ? picture_event(session->server.bench) : STILL_HERE,
                 [session](bool sent) {
                     session->left = session->left || !sent;
                     next_event(session);
                 });
    });
}

/// Sends what there is to see, and again whenever a request changes it, until the watcher leaves
/// or the simulator shuts down.
void stream_events(const session_ptr &session) {
    // A watcher has nothing more to say: what arrives is the end of its connection.
    session->client->socket.async_wait(asio::socket_base::wait_read, [session](const error_code &) {
        session->left = true;
        session->client->timer.cancel();
        session->client->socket.cancel();
    });
    send_all(session->client, STREAM_HEAD + picture_event(session->server.bench),
             [session](bool sent) {
                 session->left = session->left || !sent;
                 next_event(session);
             });
}

/// The line is printed before the answer goes out, so that a client that has its answer finds the
/// line.
void finish(const session_ptr &session) {
    const daemon_row &daemon = session->conversation.daemon;
    const exchange_result &exchange = session->conversation.exchange;
    add_entry(session->server.bench.journal,
              {&daemon, exchange.request, exchange.outcome, exchange.answer});
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

/// Replaces the proper answer as the daemon was told; others answer only where it was told nothing.
void choose_answer(const session_ptr &session) {
    test_bench &bench = session->server.bench;
    const daemon_row &daemon = session->conversation.daemon;
    const told_behaviour &told = session->conversation.behaviour;
    exchange_result &exchange = session->conversation.exchange;
    session->server.at_work = &daemon;
    if (told.delay > 0 && session->server.loop.stopping) {
        exchange = {exchange.request, "not answered, the simulator shuts down", {}};
    } else if (told.close) {
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
    } else if (conversation.exchange.audience == audience_kind::PAGE) {
        send_all(session->client, *conversation.exchange.answer,
                 [session](bool /*sent*/) { end_connection(session->client); });
    } else {
        print_raw(*session, "<-", conversation.received);
        wait(session->client, std::chrono::milliseconds(conversation.behaviour.delay),
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

void accept_next(simulator_server &server, daemon_listener &listener);

void accepted(simulator_server &server, daemon_listener &listener, const error_code &error,
              stream_socket socket) {
    if (server.loop.stopping) {
        return;
    }
    if (error) {
        const auto pause = std::make_shared<loop_timer>(server.loop.context, ACCEPT_PAUSE);
        pause->async_wait(
            [&server, &listener, pause](const error_code &) { accept_next(server, listener); });
        return;
    }
    accept_next(server, listener);
    if (server.sessions.size() < MOST_CONNECTIONS) {
        read_request(std::make_shared<client_session>(server, *listener.daemon, std::move(socket)));
    } else {
        print_note(*listener.daemon, "too many connections, one closed");
    }
}

void accept_next(simulator_server &server, daemon_listener &listener) {
    if (!server.loop.stopping) {
        listener.acceptor.async_accept(
            [&server, &listener](const error_code &error, stream_socket socket) {
                accepted(server, listener, error, std::move(socket));
            });
    }
}

void announce(test_bench &bench, const listener_set &listeners) {
    for (const daemon_listener &row : listeners.rows) {
        const bool refuses = bench.settings.behaviours[row_of(*row.daemon)].refuse;
        const std::string place = row.path.empty() ? listeners.origin + SERVICE_PATH : row.path;
        bench.places.push_back(place);
        print_log(
            {refuses ? "refuses" : "listens",
             row.daemon->key,
             std::string(row.daemon->label) + (refuses ? " refuses on " : " listens on ") + place,
             {{"place", place}}});
    }
}

/// A connection that cannot be served for lack of memory must not take the others with it.
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

std::string serve(test_bench &bench) {
    const simulator_settings &settings = bench.settings;
    simulator_server server{bench};
    asio::signal_set signals(server.loop.context, SIGINT, SIGTERM);
    std::string complaint = open_listeners(server.loop, settings, server.listeners);
    if (!complaint.empty()) {
        return complaint;
    }
    bench.home.origin = server.listeners.origin;
    announce(bench, server.listeners);
    if (!settings.ready_file.empty() &&
        !write_file(settings.ready_file, "directory=" + settings.directory + "\nurl=" +
                                             server.listeners.origin + SERVICE_PATH + "\n")) {
        close_listeners(server.listeners);
        return "cannot write " + settings.ready_file + "; choose another with --ready-file";
    }
    print_log({"ready", "", "ready"});
    bench.journal.watch = [&server]() {
        for (client_session *session : server.sessions) {
            session->changed = true;
            if (session->idle) {
                session->client->timer.cancel();
            }
        }
    };
    for (daemon_listener &row : server.listeners.rows) {
        if (!bench.settings.behaviours[row_of(*row.daemon)].refuse) {
            accept_next(server, row);
        }
    }
    signals.async_wait([&server](const error_code &, int) {
        for (daemon_listener &row : server.listeners.rows) {
            row.acceptor.cancel();
        }
        stop_waiting(server.loop);
    });
    run(server);
    close_listeners(server.listeners);
    if (!settings.ready_file.empty()) {
        std::remove(settings.ready_file.c_str());
    }
    return "";
}
