// The exchange with FSMCore, the controller's state-machine core: one request with length-framed
// parameters, one answer read in one receive. Local over its Unix-domain socket, remote over TCP.

#pragma once

#include <cstddef>

constexpr int FSMC_CONNECT_FAILED = 6;  ///< connection not opened, or a bad address or port
constexpr int FSMC_SEND_FAILED = 7;     ///< the send call failed
constexpr int FSMC_RESPONSE_FAILED = 8; ///< no well-formed answer, or a request over the limits

/// A value travels in a slot of this many bytes, terminator included.
constexpr std::size_t FSMC_SLOT_SIZE = 512;
constexpr int FSMC_MOST_VALUES = 48;

/// Sends one request to the local daemon and reads its answer.
/// @param socket_path Unix-domain socket of the daemon.
/// @param function function name, sent as it is.
/// @param count number of slots to send; zero or less sends none.
/// @param slots first of `count` consecutive slots of FSMC_SLOT_SIZE bytes.
/// @param returned_count,returned_values filled only on success and only when both are non-null;
///        the list and its strings then belong to the caller, entries announced empty are null.
/// @param waittime wait time for the daemon, as text.
/// @return the daemon's status number, or one of the codes above after a message.
int fsmcore_requeststatic(const char *socket_path, const char *function, int count,
                          const char *slots, int *returned_count, char ***returned_values,
                          const char *waittime);

/// The same with a remote controller; its request carries no wait time.
/// @param address IPv4 address in numbers-and-dots notation.
/// @param port decimal text, above 1024.
int fsmcore_m2mrequeststatic(const char *address, const char *port, const char *function, int count,
                             const char *slots, int *returned_count, char ***returned_values);
