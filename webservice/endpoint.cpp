#include "webservice/endpoint.h"

#include "front/product.h"
#include "front/utility.h"
#include "webservice/service_calls.h"

#include <arpa/inet.h>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <strings.h>

namespace {

constexpr char SCHEME[] = "http://";
constexpr unsigned long HIGHEST_PORT = 65535;

bool has_blank_or_control(const char *url) {
    for (const char *at = url; *at != '\0'; at++) {
        const auto byte = static_cast<unsigned char>(*at);
        if (byte <= ' ' || byte == 0x7f) {
            return true;
        }
    }
    return false;
}

/// The runtime decodes the user. It reads beyond the url when the user ends within an escape or a
/// quotation, ends it at a zero byte, and takes one without a name for a part of the host.
bool is_readable_user(const char *user, const char *end) {
    for (const char *at = user; at < end; at++) {
        const bool is_escape = isxdigit(static_cast<unsigned char>(at[1])) != 0 &&
                               isxdigit(static_cast<unsigned char>(at[2])) != 0 &&
                               strncmp(at + 1, "00", 2) != 0;
        if (*at == '"' || *at == '\\' || (*at == '%' && !is_escape)) {
            return false;
        }
    }
    return *user != '@' && *user != ':';
}

/// The end of a host: of a name or an address, or behind the bracket that closes one of IPv6. Null
/// where there is none.
const char *end_of_host(const char *host) {
    if (*host != '[') {
        // An escape is looked up as it stands, and "*" means this machine to getaddrinfo().
        const std::size_t length = strcspn(host, "@:/?\\*%");
        return length != 0 ? host + length : nullptr;
    }
    char address[INET6_ADDRSTRLEN] = {};
    in6_addr parsed;
    const std::size_t length = strcspn(host + 1, "]");
    if (length >= sizeof address || host[length + 1] == '\0') {
        return nullptr;
    }
    memcpy(address, host + 1, length);
    return inet_pton(AF_INET6, address, &parsed) == 1 ? host + length + 2 : nullptr;
}

/// The runtime looks for the path at the next slash: a query before it would be lost.
bool is_readable_port(const char *port) {
    char *end = nullptr;
    const unsigned long number = strtoul(port, &end, 10);
    return isdigit(static_cast<unsigned char>(*port)) != 0 && number <= HIGHEST_PORT &&
           (*end == '\0' || *end == '/');
}

} // namespace

bool is_local_endpoint(const char *url) {
    return url == nullptr || names_match(url, LUMOWS_DEFAULT_URL) ||
           names_match(url, LUMOWS_LOOPBACK_URL);
}

int longest_endpoint() {
    return static_cast<int>(sizeof(soap::endpoint)) - 1;
}

bool is_usable_endpoint(const char *url) {
    if (url == nullptr) {
        return true;
    }
    // A fragment is not for the service; the runtime would send it.
    if (strncasecmp(url, SCHEME, strlen(SCHEME)) != 0 || strlen(url) >= sizeof(soap::endpoint) ||
        has_blank_or_control(url) || strchr(url, '#') != nullptr) {
        return false;
    }
    const char *host = url + strlen(SCHEME);
    // The runtime takes what stands before the first "@" for the user, wherever that is.
    if (const char *user_end = strchr(host, '@'); user_end != nullptr) {
        if (user_end > host + strcspn(host, "/?") || !is_readable_user(host, user_end)) {
            return false;
        }
        host = user_end + 1;
    }
    const char *end = end_of_host(host);
    if (end == nullptr) {
        return false;
    }
    // strchr() finds the url's end as well.
    return *end == ':' ? is_readable_port(end + 1) : strchr("/?", *end) != nullptr;
}
