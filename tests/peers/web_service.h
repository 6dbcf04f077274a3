// What the tests of a misbehaving web service share: the call, the good answer and what comes of
// it.

#pragma once

#include "tests/peers/measured_program.h"
#include "tests/peers/rude_peer.h"

#include <string>

namespace harness {

/// What every request ends with.
extern const char *const SOAP_REQUEST_END;

/// The program's arguments for a call that shows two fields; `quiet` leaves the lines out.
words soap_call(int port, bool quiet = false);

/// The good answer's fields.
extern const char *const GOOD_CHILDREN;

/// An envelope with a response that has these children.
std::string soap_answer(const std::string &children);

/// A whole HTTP head without a length; `headers` are complete lines.
std::string http_head(const std::string &headers = "", const std::string &status = "200 OK",
                      const std::string &type = "text/xml; charset=utf-8");

/// The two lines and the last one of a good answer with these fields.
std::string shown(pid_t pid, const std::string &status, const std::string &value);

/// A size that only the shipped program is given in full.
std::size_t flooded(std::size_t size);

/// Expects the status and the last line of a call without a result.
void expect_no_result(const measured_run &measured);

} // namespace harness
