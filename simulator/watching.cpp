// Browser pages: each gets an event for every change.
#include "simulator/http_front.h"
#include "simulator/page.h"
#include "simulator/session.h"

namespace {

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

void stream_events(const session_ptr &session) {
    if (session->conversation.exchange.web.method == "HEAD") {
        send_all(session->client, STREAM_HEAD,
                 [session](bool /*sent*/) { end_connection(session->client); });
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
