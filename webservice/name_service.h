// How the host of an endpoint becomes an address.

#pragma once

/// Lets a statically linked program find hosts by /etc/hosts and DNS alone, whatever the machine's
/// nsswitch.conf names: those would be modules of the machine's own C library, which a program with
/// another one in it cannot load. Where the C library is shared, nothing changes.
void use_linked_name_service();
