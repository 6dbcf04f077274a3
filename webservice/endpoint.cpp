#include "webservice/endpoint.h"

#include "front/product.h"
#include "front/utility.h"
#include "webservice/service_calls.h"

#include <cstring>

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

/// The part before the first "@" is a user, wherever that stands.
struct url_parts {
    const char *user;
    const char *user_end; ///< null without a user
    const char *host;
};

url_parts parts_of(const char *url) {
    const char *scheme_end = strstr(url, "://");
    const char *start = scheme_end == nullptr ? url : scheme_end + 3;
    const char *user_end = strchr(start, '@');
    return {start, user_end, user_end == nullptr ? start : user_end + 1};
}

bool is_hexadecimal(char digit) {
    return digit != '\0' && strchr("0123456789abcdefABCDEF", digit) != nullptr;
}

/// The runtime decodes the user and reads beyond the url when that ends within an escape or a
/// quotation.
bool has_unreadable_user(const url_parts &parts) {
    for (const char *at = parts.user; parts.user_end != nullptr && at < parts.user_end; at++) {
        const bool is_escape = is_hexadecimal(at[1]) && is_hexadecimal(at[2]);
        if (*at == '"' || (*at == '%' && !is_escape)) {
            return true;
        }
    }
    return false;
}

/// The runtime looks for the port behind the bracket that ends a numeric host, and behind the url
/// when there is none.
bool has_unended_bracket(const url_parts &parts) {
    return *parts.host == '[' && strchr(parts.host, ']') == nullptr;
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
    const url_parts parts = parts_of(url);
    if ((names_scheme && behind_beginning(url, SCHEME) == nullptr) ||
        strlen(url) >= sizeof context->endpoint || has_blank_or_control(url) ||
        has_unreadable_user(parts) || has_unended_bracket(parts)) {
        return false;
    }
    soap_set_endpoint(context, url);
    return *context->host != '\0';
}
