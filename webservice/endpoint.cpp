#include "webservice/endpoint.h"

#include "front/product.h"
#include "front/utility.h"
#include "webservice/service_calls.h"

#include <cstring>
#include <strings.h>

namespace {

constexpr char SCHEME[] = "http://";

bool has_blank_or_control(const char *url) {
    for (const char *at = url; *at != '\0'; at++) {
        const auto byte = static_cast<unsigned char>(*at);
        if (byte <= ' ' || byte == 0x7f) {
            return true;
        }
    }
    return false;
}

} // namespace

bool is_local_endpoint(const char *url) {
    return url == nullptr || names_match(url, LUMOWS_DEFAULT_URL) ||
           names_match(url, LUMOWS_LOOPBACK_URL);
}

bool is_usable_endpoint(struct soap *context, const char *url) {
    if (url == nullptr) {
        return true;
    }
    const bool names_scheme = strstr(url, "://") != nullptr;
    if ((names_scheme && strncasecmp(url, SCHEME, sizeof(SCHEME) - 1) != 0) ||
        strlen(url) >= sizeof context->endpoint || has_blank_or_control(url)) {
        return false;
    }
    soap_set_endpoint(context, url);
    return *context->host != '\0';
}
