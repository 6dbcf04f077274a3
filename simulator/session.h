// What serves the clients: the server with its loop, and one session for each connection.
#pragma once

#include "simulator/bench.h"
#include "simulator/listeners.h"

struct simulator_server {
    test_bench &bench;
    event_loop loop = {};
    listener_set listeners = {};
    std::set<struct client_session *> sessions = {};
    const daemon_row *at_work = DAEMONS.data(); ///< named in the message about an exception
};

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
    int turn = 0;         ///< which of its daemon's requests this is
    std::size_t seen = 0; ///< number of the last entry that a watcher saw
    bool told_to_continue = false;
    bool idle = false;    ///< a watcher that waits for something to see
    bool changed = false; ///< and has not seen the last change
    bool left = false;
};

using session_ptr = std::shared_ptr<client_session>;

/// Sends what ends the conversation, whether the client takes it or not.
inline void send_last(const session_ptr &session, std::string bytes) {
    send_all(session->client, std::move(bytes),
             [session](bool /*sent*/) { end_connection(session->client); });
}

/// Sends what there is to see, and again whenever a request changes it, until the watcher leaves
/// or the simulator shuts down.
void stream_events(const session_ptr &session);

/// Answers what else the page asks for: the bytes of a request, or a change.
void answer_bench(const session_ptr &session);

/// Lets a daemon listen, or refuse connections, as it is told by now.
void follow_refusals(simulator_server &server, daemon_listener &listener);
