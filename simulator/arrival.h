// How the reading of a request ended.
#pragma once

enum class Arrival { data, end, late, stopped, full, failed };

/// Why no whole request came, in words for a request line; `data` has none.
const char *describe_arrival(Arrival arrival);
