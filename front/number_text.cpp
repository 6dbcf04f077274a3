#include "front/number_text.h"

#include <cerrno>
#include <climits>
#include <cstdlib>

static_assert(sizeof(int) == 4, "status codes and counts are 32-bit numbers");

bool read_number(const char *text, int *value) {
    char *end = nullptr;
    errno = 0;
    long number = strtol(text, &end, 10);
    // A 64-bit long must not accept what the controller's 32-bit long refuses.
    if (number > INT_MAX) {
        number = INT_MAX;
        errno = ERANGE;
    } else if (number < INT_MIN) {
        number = INT_MIN;
        errno = ERANGE;
    }
    *value = static_cast<int>(number);
    // Some libraries set EINVAL for a text without digits; this one does not.
    return errno != EINVAL && errno != ERANGE && *end == '\0';
}
