// Which client carries which request type. Included by main, and by the table lister, which lists
// what can be asked; it knows every client, so nothing else includes it.

#pragma once

#include "front/request_record.h"
#include "front/request_types.h"
#include "fsmcore/fsmcorelocal_request.h"
#include "gateways/localclientutil.h"
#include "webservice/soapcallsclientutil.h"

#include <iterator>

using local_client = int(const char *socket_path, const char *function, const char *parameters);

/// What is done for one request type.
struct dispatch_row {
    request_type type;
    const char *mark;               ///< trace text before the call
    local_client *client = nullptr; ///< null: the web service
};

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

/// True when the local types and the web service have a row in DISPATCH, and nothing else has.
consteval bool dispatch_fits_request_types() {
    std::size_t types = 0;
    for (const request_type_row &row : REQUEST_TYPES) {
        const bool needs_client = row.kind == LOCAL_KIND || row.kind == WEB_SERVICE_KIND;
        bool is_dispatched = false;
        for (const dispatch_row &dispatch : DISPATCH) {
            is_dispatched = is_dispatched || dispatch.type == row.type;
        }
        if (is_dispatched != needs_client) {
            return false;
        }
        types += is_dispatched ? 1U : 0U;
    }
    return types == std::size(DISPATCH);
}
static_assert(dispatch_fits_request_types(),
              "each local or web-service type of REQUEST_TYPES needs one row in DISPATCH, and "
              "nothing else may have one");
