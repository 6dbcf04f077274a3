// Which urls the runtime would misread: without a host it would write the request to standard
// output and wait on standard input, a long one it would cut, another transport might wait forever,
// an "@" in a path would lead elsewhere. Which ones mean this very machine.

#include "webservice/endpoint.h"

#include <gtest/gtest.h>
#include <string>

namespace {

TEST(Endpoint, IsUnusableWhereTheRuntimeWouldMisreadIt) {
    for (const char *url :
         {// Another transport, or none.
          "", "/cgi-bin/lumows", ":80", "127.0.0.1:1/cgi-bin/lumows", "http:/127.0.0.1:1/",
          "https://127.0.0.1/", "udp://127.0.0.1:9/", "soap.udp:@127.0.0.1:9/",
          // No host.
          "http://", "http:///cgi-bin/lumows", "http://:80/", "http://u@", "http://?a",
          // A host that is none, or another one to the runtime.
          "http://*:8/", "http://127.0.0.%33/", "http://127.0.0.1\\@127.0.0.2:8/",
          "http://a@b@127.0.0.1:1/", "http://[localhost]/", "http://[127.0.0.3]/",
          "http://[v1.127.0.0.3]/", "http://[fe80::1%251]:8/", "http://[]/", "http://[::1]x/",
          "http://[::1/]", "http://u@[::1:80/", "http://[u]@[::1:80/",
          "http://[::1\0/", // what follows the end must not be read
          "http://[1111:2222:3333:4444:5555:6666:7777:127.127.127.1270]/",
          // A port that is none.
          "http://127.0.0.1:/", "http://127.0.0.1:http/", "http://127.0.0.1:1x/",
          "http://127.0.0.1:-1/", "http://127.0.0.1:+1/", "http://127.0.0.1: 1/",
          "http://127.0.0.1:65536/", "http://127.0.0.1:99999999999999999999/",
          "http://127.0.0.1:1?a",
          // An "@" that ends no user.
          "http://127.0.0.1:9/x/@127.0.0.2:8/", "http://127.0.0.1:9/x?mail=a@other",
          "http://127.0.0.1?a@b", "http://127.0.0.1:1/100%@b",
          // A user that the runtime would not decode, or end too early.
          "http://@127.0.0.1:1/", "http://:p@127.0.0.1:1/", "http://u\\x@127.0.0.2:8/",
          "http://\"a@127.0.0.1:1/", "http://u%00x@127.0.0.1:8/", "http://u%@127.0.0.1:1/",
          "http://u%4@127.0.0.1:1/", "http://u%F@127.0.0.1:1/", "http://u%g4@127.0.0.1:1/",
          "http://u%4g@127.0.0.1:1/", "http://u:p%@127.0.0.1:1/",
          // A fragment, a blank, a control character.
          "http://127.0.0.1#a", "http://127.0.0.1:1#a", "http://127.0.0.1:9/a#b",
          "http://127.0.0.1:9/x#a@b", "http://127.0.0.1:1/a b", "http://127.0.0.1:1/a\nb",
          "http://127.0.0.1:1/\x7f", "http://127.0.0.1:1/\x01"}) {
        EXPECT_FALSE(is_usable_endpoint(url)) << url;
    }
}

TEST(Endpoint, IsUsableCloseToThat) {
    for (const char *url :
         {"http://h", "HTTP://h/", "http://h?q", "http://h:0/", "http://h:65535", "http://[::1]",
          "http://[::1]:1/[", "http://[u@h/a@[b", "http://u%41:p%2f%30@h/", "http://%4A@h",
          "http://u@h/100%@b", "http://u@h/a\"@b", "http://u@h/x?mail=a@b",
          "http://h/100%\"\\*:[]!~\xff",
          "http://[1111:2222:3333:4444:5555:6666:127.127.127.127]/"}) {
        EXPECT_TRUE(is_usable_endpoint(url)) << url;
    }
    EXPECT_TRUE(is_usable_endpoint(nullptr)); // the default one
}

TEST(Endpoint, IsUsableUpToALength) {
    const std::string longest = "http://h/" + std::string(1023 - 9, 'a');
    EXPECT_TRUE(is_usable_endpoint(longest.c_str()));
    EXPECT_FALSE(is_usable_endpoint((longest + "a").c_str()));
    EXPECT_EQ(longest_endpoint(), 1023);
}

TEST(Endpoint, IsLocalByNameAndByAddressInAnyCase) {
    for (const char *url : {"http://localhost/cgi-bin/lumows", "http://127.0.0.1/cgi-bin/lumows",
                            "HTTP://LOCALHOST/CGI-BIN/LUMOWS", "HTTP://127.0.0.1/Cgi-Bin/LumoWS"}) {
        EXPECT_TRUE(is_local_endpoint(url)) << url;
    }
    EXPECT_TRUE(is_local_endpoint(nullptr)); // the default one
    for (const char *url :
         {"http://localhost:80/cgi-bin/lumows", "http://localhost/cgi-bin/lumows/",
          "http://localhost/cgi-bin/lumow", "http://127.1/cgi-bin/lumows"}) {
        EXPECT_FALSE(is_local_endpoint(url)) << url;
    }
}

} // namespace
