/* What the C++ side needs of the C side beside the generated calls. */

#pragma once

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Size of struct soap where the generated code is compiled. The C++ side must see the same: a
 * runtime compiled with other flags links cleanly and crashes at run time. */
size_t lumows_context_size(void);

#ifdef __cplusplus
}
#endif
