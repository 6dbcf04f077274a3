// SOAP 1.1 envelopes: taking a request apart, and writing responses and faults. Strict about
// what clients of this service write; knows nothing of HTTP or of what operations do.
#pragma once

#include "simulator/operations.h"

#include <variant>

/// A request that cannot be answered with a response element.
struct soap_fault {
    std::string code; ///< local name in the envelope namespace, such as Client
    std::string text;
};

/// A qualified name without its prefix.
std::string_view local_name(std::string_view name);

/// Reads a request envelope. Wrong children of a known operation are no fault but a complaint
/// in the call, since they can be answered with a status.
std::variant<service_call, soap_fault> read_envelope(std::string_view body);

/// The response envelope of an operation: all its response children in order, the ones that
/// `fields` does not hold empty.
std::string write_response(const service_operation &operation, const response_fields &fields);
std::string write_fault(const soap_fault &fault);
