/* The least that carries one gateway request: what a run of lumocmd is compared with. It is told
 * the request's bytes, reads one status line of one gateway and says nothing when anything fails.
 */

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

/* usage: bare_client SOCKET REQUEST */
int main(int argument_count, char **arguments) {
    struct sockaddr_un address = {.sun_family = AF_UNIX};
    if (argument_count != 3 || strlen(arguments[1]) >= sizeof address.sun_path) {
        return EXIT_FAILURE;
    }
    memcpy(address.sun_path, arguments[1], strlen(arguments[1]) + 1);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    if (descriptor < 0 ||
        connect(descriptor, (const struct sockaddr *)&address, sizeof address) < 0 ||
        send(descriptor, arguments[2], strlen(arguments[2]), 0) < 0) {
        return EXIT_FAILURE;
    }
    char answer[1025] = {0};
    int status = 0;
    if (recv(descriptor, answer, sizeof answer - 1, 0) < 0 ||
        sscanf(answer, "Response Status: BENG-%d", &status) != 1) {
        return EXIT_FAILURE;
    }
    close(descriptor);
    printf("LMCM-%04d\n", status);
    return status;
}
