// Accepting and serving. The main thread only accepts; whatever waits for a client is a thread
// per connection, which also watches the stop descriptor and so ends with the simulator.
#include "server.h"

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

void print_raw(const Settings &settings, const Daemon &daemon, const char *direction,
               const std::string &bytes) {
    if (settings.raw && !bytes.empty()) {
        print_line(std::string(daemon.label) + " " + direction + " " + quote_bytes(bytes));
    }
}

/// Carries an exchange to its end: waits, answers or not, as the daemon was told. The line is
/// printed before the answer goes out, so that a client that has its answer finds the line.
void finish_exchange(const Settings &settings, Conversation &conversation, Exchange exchange) {
    const Behaviour &told = conversation.behaviour;
    const std::string opening =
        std::string(conversation.daemon.label) + ": " + exchange.request + " -> ";
    print_raw(settings, conversation.daemon, "<-", conversation.connection.received);
    if (!wait_milliseconds(conversation.connection, told.delay)) {
        print_line(opening + "not answered, the simulator shuts down");
        return;
    }
    if (told.close) {
        print_line(opening + "closed without an answer");
        return;
    }
    if (told.raw) {
        exchange.answer = *told.raw;
        exchange.outcome = std::to_string(exchange.answer.size()) + " raw bytes";
    }
    print_line(opening + exchange.outcome);
    print_raw(settings, conversation.daemon, "->", exchange.answer);
    if (!send_all(conversation.connection, exchange.answer)) {
        print_line(std::string(conversation.daemon.label) + ": the client did not take its answer");
    }
}

void serve_connection(const Settings &settings, const Daemon &daemon, Home &home,
                      Connection connection) {
    const Behaviour &told = settings.behaviours[row_of(daemon)];
    Conversation conversation{daemon, told, connection, home};
    Exchange exchange = daemon.exchange(conversation);
    if (exchange.request.empty()) {
        print_line(std::string(daemon.label) + ": no request, " + exchange.outcome);
    } else {
        finish_exchange(settings, conversation, std::move(exchange));
    }
    end_connection(connection);
}

/// A connection that cannot be served for lack of memory must not take the others with it.
void serve_safely(const Settings &settings, const Daemon &daemon, Home &home,
                  const Connection &connection) {
    try {
        serve_connection(settings, daemon, home, connection);
    } catch (const std::exception &error) {
        print_line(std::string(daemon.label) + ": connection dropped: " + error.what());
        close(connection.descriptor);
    }
}

void start_worker(std::list<Worker> &workers, const Settings &settings, const Daemon &daemon,
                  Home &home, int descriptor, int stop) {
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(settings.patience);
    Connection connection{descriptor, stop, deadline, daemon.limit, ""};
    Worker &worker = workers.emplace_back();
    try {
        worker.thread = std::thread([&worker, &settings, &daemon, &home, connection]() {
            serve_safely(settings, daemon, home, connection);
            worker.done = true;
        });
    } catch (const std::system_error &error) {
        print_line(std::string(daemon.label) + ": connection dropped: " + error.what());
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

void accept_connection(std::list<Worker> &workers, const Settings &settings,
                       const Listener &listener, Home &home, int stop) {
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
        print_line(std::string(listener.daemon->label) + ": too many connections, one closed");
        close(descriptor);
        return;
    }
    start_worker(workers, settings, *listener.daemon, home, descriptor, stop);
}

} // namespace

void serve(const Settings &settings, const Listeners &listeners, Home &home,
           int signal_descriptor) {
    const int stop = eventfd(0, EFD_CLOEXEC);
    std::list<Worker> workers;
    std::vector<pollfd> watched{{signal_descriptor, POLLIN, 0}};
    for (const Listener &row : listeners.rows) {
        // A socket that only refuses would report an error for ever; poll skips negative ones.
        const bool refuses = settings.behaviours[row_of(*row.daemon)].refuse;
        watched.push_back({refuses ? -1 : row.descriptor, POLLIN, 0});
    }
    while (watched[0].revents == 0) {
        if (poll(watched.data(), watched.size(), -1) < 0) {
            continue;
        }
        for (std::size_t i = 0; i < listeners.rows.size(); ++i) {
            if (watched[i + 1].revents != 0) {
                accept_connection(workers, settings, listeners.rows[i], home, stop);
            }
        }
    }
    eventfd_write(stop, 1);
    for (Worker &worker : workers) {
        worker.thread.join();
    }
    close(stop);
}
