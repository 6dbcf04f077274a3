// The simulator's own version, in one place.
#pragma once

#define LUMOSIM_VERSION "1.0.0"
