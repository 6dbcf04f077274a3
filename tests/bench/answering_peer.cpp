// Answers every request at the least cost: what is measured is the client. One connection at a
// time, no checks.
//
// usage: answering_peer [SOCKET ANSWER]...
// SOCKET is the number of an inherited listening socket, ANSWER a file. A byte on standard input
// prints the last request, behind a line with its size; the end of standard input ends the peer.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace {

/// A daemon's request ends with an empty line, a call with the last byte of its body.
bool is_complete(const std::string &request) {
    const std::string length = "\r\nContent-Length: ";
    const std::size_t length_at = request.find(length);
    const std::size_t head_end = request.find("\r\n\r\n");
    if (length_at == std::string::npos || head_end == std::string::npos) {
        return request.ends_with("\n\n");
    }
    return request.size() - head_end - 4 >=
           strtoul(request.c_str() + length_at + length.size(), nullptr, 10);
}

/// Answers one request and returns it; a client that leaves early gets nothing.
std::string serve_one(int listener, const std::string &answer) {
    std::string request;
    const int client = accept(listener, nullptr, nullptr);
    char piece[4096];
    ssize_t size = 1;
    while (size > 0 && !is_complete(request)) {
        size = recv(client, piece, sizeof piece, 0);
        request.append(piece, size > 0 ? static_cast<std::size_t>(size) : 0);
    }
    if (size > 0) {
        send(client, answer.data(), answer.size(), MSG_NOSIGNAL); // blocks until all is taken
    }
    close(client);
    return request;
}

} // namespace

int main(int argument_count, char **arguments) {
    std::vector<pollfd> awaited = {{STDIN_FILENO, POLLIN, 0}};
    std::vector<std::string> answers = {""};
    for (int i = 1; i + 1 < argument_count; i += 2) {
        std::ifstream file(arguments[i + 1]);
        awaited.push_back({atoi(arguments[i]), POLLIN, 0});
        answers.emplace_back(std::istreambuf_iterator<char>(file),
                             std::istreambuf_iterator<char>());
    }
    std::string last_request;
    while (poll(awaited.data(), awaited.size(), -1) > 0) {
        for (std::size_t i = 1; i < awaited.size(); i++) {
            if (awaited[i].revents != 0) {
                last_request = serve_one(awaited[i].fd, answers[i]);
            }
        }
        char byte = 0;
        if (awaited[0].revents != 0) {
            if (read(STDIN_FILENO, &byte, 1) != 1) {
                return EXIT_SUCCESS;
            }
            printf("%zu\n%s", last_request.size(), last_request.c_str());
            fflush(stdout);
        }
    }
    return EXIT_FAILURE;
}
