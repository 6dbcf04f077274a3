// The request record: everything that the command line said, once per process.
// The parser fills it, the diagnostics read its verbose flag, main hands its fields to a client.

#pragma once

/// One command line. Strings are owned by the record and null when their option is absent.
struct cmd_config {
    char *address;     ///< -a: IPv4 address text of a remote gateway
    char *socket_path; ///< -s: Unix-domain socket of the daemon
    char *url;         ///< -u: URL of the web service
    char *parameters;  ///< -p: raw list, items separated by vertical bars
    char *function;    ///< -f: function name, in the caller's own case
    int verbose;       ///< -v: 1 after ON, 0 after OFF
    int waittime;      ///< -w: wait time for the web service, 0 when absent
    int port;          ///< -d: TCP port of a remote gateway, 0 when absent
};

/// The request of this process; zero until the parser fills it.
extern cmd_config g_config;
