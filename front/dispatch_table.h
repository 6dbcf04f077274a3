// Which client carries which request type. Included by main, and by catalogue/, which lists what
// can be asked; it knows every client, so nothing else includes it.

#pragma once

#include "front/request_record.h"
#include "front/request_types.h"
#include "fsmcore/fsmcorelocal_request.h"
#include "gateways/localclientutil.h"
#include "webservice/soapcallsclientutil.h"

#include <iterator>
#include <utility>

using local_client = int(const char *socket_path, const char *function, const char *parameters);

/// What is done for one request type.
struct dispatch_row {
    request_type type;
    const char *mark;               ///< trace text before the call
    local_client *client = nullptr; ///< null: the web service
};

/// The builders of gateways are declared by LOCAL_BUILDERS in gateways/localclientutil.h.
inline constexpr dispatch_row DISPATCH[] = {
    {REQUEST_SOAP, "main->main processing a soap request"},
    {REQUEST_EIBLOCAL, "main->main processing an EIB local request", make_eibuslocal_request},
    {REQUEST_SMSTOOLLOCAL, "main->main processing a SMSTOOL local request",
     make_smstoollocal_request},
    {REQUEST_LINTRONICLOCAL, "main->main processing a LINTRONIC local request",
     make_lintroniclocal_request},
    {REQUEST_TECNOUTLOCAL, "main->main processing a TECNOUT local request",
     make_tecnoutlocal_request},
    {REQUEST_VIVALDILOCAL, "main->main processing a VIVALDI local request",
     make_vivaldilocal_request},
    {REQUEST_BENTELLOCAL, "main->main processing a BENTEL local request", make_bentellocal_request},
    {REQUEST_FSMCORE, "main->main processing a FSMCore request", make_fsmcorelocal_request},
    {REQUEST_TUTONDOLOCAL, "main->main processing a TUTONDO local request",
     make_tutondolocal_request},
};

/// The row of a type; null for one that no client carries.
inline const dispatch_row *find_dispatch(int type) {
    for (const dispatch_row &row : DISPATCH) {
        if (row.type == type) {
            return &row;
        }
    }
    return nullptr;
}

/// find_dispatch() for the compiler: to the sanitizers' build an address here is no constant.
constexpr bool is_dispatched(request_type type) {
    for (const dispatch_row &row : DISPATCH) {
        if (row.type == type) {
            return true;
        }
    }
    return false;
}

constexpr bool needs_client(const request_type_row &row) {
    return row.kind == LOCAL_KIND || row.kind == WEB_SERVICE_KIND;
}

template <request_type Type, bool NeedsClient> constexpr bool check_dispatch() {
    static_assert(is_dispatched(Type) == NeedsClient,
                  "a local or web-service type of REQUEST_TYPES needs a row in DISPATCH, and no "
                  "other may have one: add or remove the row of the type that is named above");
    return true;
}

template <std::size_t... Index>
constexpr bool check_every_dispatch(std::index_sequence<Index...> /*all*/) {
    return (check_dispatch<REQUEST_TYPES[Index].type, needs_client(REQUEST_TYPES[Index])>() && ...);
}
static_assert(check_every_dispatch(std::make_index_sequence<std::size(REQUEST_TYPES)>{}));

/// True when every row has a type that is a row of REQUEST_TYPES.
consteval bool every_dispatch_has_a_type() {
    for (const dispatch_row &row : DISPATCH) {
        bool is_known = false;
        for (const request_type_row &type : REQUEST_TYPES) {
            is_known = is_known || type.type == row.type;
        }
        if (!is_known) {
            return false;
        }
    }
    return true;
}
static_assert(every_dispatch_has_a_type(),
              "a type of DISPATCH has no row in REQUEST_TYPES: add it to front/request_types.h");
