// Accepting and serving. The main thread only accepts; whatever waits for a client is a thread
// per connection, which also watches the stop descriptor and so ends with the simulator.
#include "server.h"

#include "forward.h"
#include "page.h"
#include "report.h"
#include "text.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <list>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace {

/// More connections at once than this are closed unserved.
constexpr std::size_t MOST_CONNECTIONS = 256;

/// Pause after a failed accept, which is most likely a lack of descriptors.
constexpr int ACCEPT_PAUSE_MS = 100;

struct Worker {
    std::thread thread;
    std::atomic<bool> done = false;
};

void print_note(const Daemon &daemon, const std::string &text) {
    print_log({"note", daemon.key, std::string(daemon.label) + ": " + text, {{"text", text}}});
}

void print_raw(const Settings &settings, const Daemon &daemon, std::string_view direction,
               const std::string &bytes) {
    if (settings.raw && !bytes.empty()) {
        print_log({"bytes",
                   daemon.key,
                   bytes_words(daemon, direction, bytes),
                   {{"direction", std::string(direction)}, {"bytes", quote_bytes(bytes)}}});
    }
}

/// Replaces the proper answer as the daemon was told; others answer only where it was told nothing.
void choose_answer(Bench &bench, const Conversation &conversation, Exchange &exchange) {
    const Behaviour &told = conversation.behaviour;
    if (told.close) {
        exchange.outcome = CLOSED;
        exchange.answer.reset();
    } else if (told.raw) {
        exchange.answer = *told.raw;
        exchange.outcome = std::to_string(told.raw->size()) + " raw bytes";
    } else if (is_told_to_answer(told)) {
        return;
    } else if (!bench.replay.list.empty()) {
        replay_answer(bench.replay, conversation.daemon, exchange);
    } else if (is_forwarded(bench.settings, conversation.daemon)) {
        forward_request(bench.settings, conversation, exchange);
    }
}

/// Carries an exchange to its end: waits, answers or not, as the daemon was told. The line is
/// printed before the answer goes out, so that a client that has its answer finds the line.
void finish_exchange(Bench &bench, Conversation &conversation, Exchange exchange) {
    const Daemon &daemon = conversation.daemon;
    print_raw(bench.settings, daemon, "<-", conversation.connection.received);
    if (!wait_milliseconds(conversation.connection, conversation.behaviour.delay)) {
        add_entry(bench.journal,
                  {&daemon, exchange.request, "not answered, the simulator shuts down", {}});
        return;
    }
    choose_answer(bench, conversation, exchange);
    add_entry(bench.journal, {&daemon, exchange.request, exchange.outcome, exchange.answer});
    if (exchange.answer) {
        print_raw(bench.settings, daemon, "->", *exchange.answer);
        if (!send_all(conversation.connection, *exchange.answer)) {
            print_note(daemon, "the client did not take its answer");
        }
    }
}

void serve_connection(Bench &bench, const Daemon &daemon, Connection connection) {
    Conversation conversation{daemon, bench.settings.behaviours[row_of(daemon)], connection,
                              bench.home};
    Exchange exchange = daemon.exchange(conversation);
    if (exchange.audience == Audience::events) {
        stream_events(bench, connection);
    } else if (exchange.audience == Audience::page) {
        send_all(connection, exchange.answer.value_or(""));
    } else if (exchange.request.empty()) {
        print_note(daemon, "no request, " + exchange.outcome);
    } else {
        finish_exchange(bench, conversation, std::move(exchange));
    }
    end_connection(connection);
}

/// A connection that cannot be served for lack of memory must not take the others with it.
void serve_safely(Bench &bench, const Daemon &daemon, const Connection &connection) {
    try {
        serve_connection(bench, daemon, connection);
    } catch (const std::exception &error) {
        print_note(daemon, std::string("connection dropped: ") + error.what());
        close(connection.descriptor);
    }
}

void start_worker(std::list<Worker> &workers, Bench &bench, const Daemon &daemon, int descriptor,
                  int stop) {
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(bench.settings.patience);
    Connection connection{descriptor, stop, deadline, daemon.limit, ""};
    Worker &worker = workers.emplace_back();
    try {
        worker.thread = std::thread([&worker, &bench, &daemon, connection]() {
            serve_safely(bench, daemon, connection);
            worker.done = true;
        });
    } catch (const std::system_error &error) {
        print_note(daemon, std::string("connection dropped: ") + error.what());
        close(descriptor);
        workers.pop_back();
    }
}

void join_finished(std::list<Worker> &workers) {
    workers.remove_if([](Worker &worker) {
        const bool done = worker.done;
        if (done) {
            worker.thread.join();
        }
        return done;
    });
}

void accept_connection(std::list<Worker> &workers, Bench &bench, const Listener &listener,
                       int stop) {
    const int descriptor =
        accept4(listener.descriptor, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (descriptor < 0) {
        if (errno == EMFILE || errno == ENFILE || errno == ENOMEM) {
            poll(nullptr, 0, ACCEPT_PAUSE_MS);
        }
        return;
    }
    join_finished(workers);
    if (workers.size() >= MOST_CONNECTIONS) {
        print_note(*listener.daemon, "too many connections, one closed");
        close(descriptor);
        return;
    }
    start_worker(workers, bench, *listener.daemon, descriptor, stop);
}

} // namespace

void serve(Bench &bench, const Listeners &listeners, int signal_descriptor) {
    const int stop = eventfd(0, EFD_CLOEXEC);
    std::list<Worker> workers;
    std::vector<pollfd> watched{{signal_descriptor, POLLIN, 0}};
    for (const Listener &row : listeners.rows) {
        // A socket that only refuses would report an error for ever; poll skips negative ones.
        const bool refuses = bench.settings.behaviours[row_of(*row.daemon)].refuse;
        watched.push_back({refuses ? -1 : row.descriptor, POLLIN, 0});
    }
    while (watched[0].revents == 0) {
        if (poll(watched.data(), watched.size(), -1) < 0) {
            continue;
        }
        for (std::size_t i = 0; i < listeners.rows.size(); ++i) {
            if (watched[i + 1].revents != 0) {
                accept_connection(workers, bench, listeners.rows[i], stop);
            }
        }
    }
    eventfd_write(stop, 1);
    for (Worker &worker : workers) {
        worker.thread.join();
    }
    close(stop);
}
