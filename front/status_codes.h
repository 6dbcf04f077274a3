// The status codes that the tool itself produces. They lie in the LMCM range of the controller's
// common code space; the gateways' and FSMCore's own codes stand beside their clients.

#pragma once

constexpr int STATUS_BAD_PARAMETER = 502; ///< option value, field or status text not readable
constexpr int STATUS_FUNCTION_NOT_SUPPORTED = 503; ///< function name unknown to the client
constexpr int STATUS_MALFORMED_REQUEST = 505;      ///< options missing or wrong parameter count
constexpr int STATUS_HELP_SHOWN = 506;             ///< the usage text was shown instead
constexpr int STATUS_UNIMPLEMENTED = 507;          ///< no client for this request type
constexpr int STATUS_NO_RESULT = 508; ///< web-service call of the record group without a result
