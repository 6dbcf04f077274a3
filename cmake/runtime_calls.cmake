# The calls of the SOAP runtime that do not go to libc but to webservice/runtime_calls.cpp.

target_link_options(lumocmd PRIVATE -Wl,--wrap=malloc -Wl,--wrap=time)

# The runtime is one object file: with its client come its servers, and the loader would look up their
# names at every start. Each name here is only called by what stands above it. Datagrams are not among
# them: a url can ask for these.
set(UNREACHABLE_RUNTIME_CALLS
    # servers
    accept bind getnameinfo listen
    # dates
    gmtime_r mktime strftime timegm
    # numbers with a point, and of 64 bits
    freelocale newlocale strtod_l uselocale strtoll
    # identifiers by chance
    gettimeofday
    # limits on the time of a transfer
    difftime)
foreach(name IN LISTS UNREACHABLE_RUNTIME_CALLS)
    target_link_options(lumocmd PRIVATE
        -Wl,--wrap=${name} -Wl,--defsym=__wrap_${name}=unreachable_runtime_call)
endforeach()
