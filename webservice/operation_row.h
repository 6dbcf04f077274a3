// How a row of the dispatcher's table is made. Number and kind of an operation's arguments come
// from the type of its generated call function, so that a row that does not fit its operation does
// not compile.

#pragma once

#include "webservice/service_calls.h"

#include <cstddef>
#include <span>
#include <type_traits>
#include <utility>

/// One run's input as the operations take it.
struct webservice_call {
    struct soap *context;
    const char *url;
    char *waittime;
    int count;      ///< entries of the parameter list
    char **entries; ///< null when count is zero
    bool sendable;  ///< false: nothing is sent, the answer stays empty
};

/// Reads one field of a response record.
using field_reader = const char *(*)(const void *response);

/// A green line: a text and the response field behind it.
struct result_line {
    const char *text;
    field_reader field;
};

/// How an answer becomes lines and a status.
enum response_group {
    SINGLE_RESULT, ///< no lines; the status is in the result text
    TEXT_LINES,    ///< the lines are printed in any case
    RECORD_LINES,  ///< without a result text nothing is printed and the status is 508
};

constexpr std::size_t MOST_ARGUMENTS = 8; ///< of any operation, wait time included
constexpr std::size_t MOST_LINES = 8;     ///< of any operation
constexpr int ANY_COUNT = -1;

/// What can make an operation exceptional; the usual ones have none of it.
struct operation_exceptions {
    const char *needed_elsewhere = nullptr; ///< shown instead for an endpoint elsewhere
    /// Fills the arguments instead; false: nothing is to be sent.
    bool (*arrange)(const webservice_call &call, char **arguments) = nullptr;
    /// Completes the response before its lines are printed.
    void (*complete)(void *response) = nullptr;
};

/// One function of the service. Its call returns the status; conclude() prints the lines in
/// between.
struct operation_row {
    const char *name;   ///< the -f name
    const char *needed; ///< what the message about a wrong count asks for; null: no list is read
    int count;          ///< exact number of entries, or ANY_COUNT
    response_group group;
    int (*call)(const webservice_call &call, const operation_row &row);
    result_line lines[MOST_LINES]; ///< a null text ends them
    operation_exceptions exceptional;
};

/// Fills an operation's arguments: the entries in list order, then absent ones, the wait time last,
/// or as the row says.
/// @return true when the request is to be sent.
bool arrange_arguments(const webservice_call &call, const operation_row &row,
                       std::size_t argument_count, char **arguments);

/// Completes a response and prints its lines as its row says.
/// @param result the response's result text; null when it is absent.
/// @return the status of the result text.
int conclude(const operation_row &row, const char *result, void *response);

namespace operation {

/// The types of a call function: context, endpoint, action, texts, response record.
template <typename Function> struct call_traits;
template <typename... Rest>
struct call_traits<int (*)(struct soap *, const char *, const char *, Rest...)> {
    static constexpr std::size_t argument_count = sizeof...(Rest) - 1;
    using response =
        std::remove_pointer_t<std::remove_cvref_t<decltype((std::declval<Rest>(), ...))>>;
};
template <auto Call> using traits = call_traits<decltype(Call)>;
template <auto Call> using response_of = typename traits<Call>::response;

template <typename Member> struct member_traits;
template <typename Record> struct member_traits<char * Record::*> { using record = Record; };

template <auto Member> const char *read_field(const void *response) {
    using record = typename member_traits<decltype(Member)>::record;
    return static_cast<const record *>(response)->*Member;
}

/// The result text is called "result" everywhere but in one operation.
template <typename Response> const char *result_of(const Response &response) {
    if constexpr (requires { response.result; }) {
        return response.result;
    } else {
        return response.results;
    }
}

template <auto Call, std::size_t... Index>
void invoke(const webservice_call &call, char **arguments, response_of<Call> *response,
            std::index_sequence<Index...> /*all*/) {
    Call(call.context, call.url, nullptr, arguments[Index]..., response);
}

template <auto Call> int call_operation(const webservice_call &call, const operation_row &row) {
    constexpr std::size_t argument_count = traits<Call>::argument_count;
    static_assert(argument_count <= MOST_ARGUMENTS,
                  "more fields than any operation before: raise MOST_ARGUMENTS");
    response_of<Call> response = {};
    char *arguments[MOST_ARGUMENTS] = {};
    if (arrange_arguments(call, row, argument_count, arguments)) {
        invoke<Call>(call, arguments, &response, std::make_index_sequence<argument_count>{});
    }
    if (call.context->error != 0) {
        response = {}; // what came before the failure may have broken off: "LMWS-0" of "LMWS-042"
    }
    return conclude(row, result_of(response), &response);
}

/// A line that knows which record it reads.
template <typename Record> struct line_of { result_line line; };

template <auto Member>
consteval line_of<typename member_traits<decltype(Member)>::record> line(const char *text) {
    return {{text, read_field<Member>}};
}

template <auto Call, response_group Group, typename... Records>
consteval operation_row row(const char *name, int count, const char *needed,
                            line_of<Records>... lines) {
    static_assert((std::is_same_v<Records, response_of<Call>> && ...),
                  "a line reads a field of another operation's response");
    static_assert((Group == SINGLE_RESULT) == (sizeof...(lines) == 0),
                  "SINGLE_RESULT goes with no lines, the other groups with at least one");
    static_assert(sizeof...(lines) <= MOST_LINES,
                  "more lines than any operation before: raise MOST_LINES");
    return {name, needed, count, Group, call_operation<Call>, {lines.line...}, {}};
}

/// A row of an operation that takes entries: one for each of its fields but the wait time, less
/// AbsentLast, the fields before the wait time that always go out absent.
template <auto Call, response_group Group, int AbsentLast = 0, typename... Records>
consteval operation_row takes(const char *name, const char *needed, line_of<Records>... lines) {
    constexpr int entries = static_cast<int>(traits<Call>::argument_count) - 1 - AbsentLast;
    static_assert(entries > 0, "an operation without entries is a row of takes_nothing");
    return row<Call, Group>(name, entries, needed, lines...);
}

/// A row of an operation without entries: its list is not read.
template <auto Call, response_group Group, typename... Records>
consteval operation_row takes_nothing(const char *name, line_of<Records>... lines) {
    static_assert(traits<Call>::argument_count <= 1, "the operation has fields: use takes");
    return row<Call, Group>(name, 0, nullptr, lines...);
}

} // namespace operation

/// The rows of all operations, for whoever lists what can be asked.
std::span<const operation_row> webservice_operations();
