// A transfer location, a host with its port, and a look-up in a table of names, beside a second
// splitter.
#include <gtest/gtest.h>
#include <strings.h>

#include "fuzz/input.h"
#include "tests/config/uri_model.h"

namespace {

using kfl_fuzz::ExactText;

int indexOf(const std::string& text) {
    for (int i = 0; kfl::fileTransferProtocols[i]; ++i)
        if (strcasecmp(kfl::fileTransferProtocols[i], text.c_str()) == 0) return i;
    return -1;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = kfl_fuzz::Input(data, size).rest();
    const std::string text = bytes.substr(0, bytes.find('\0'));
    const ExactText exact(text);
    EXPECT_EQ(kfl_test::splitURI(exact), kfl_test::modelOfURI(text));
    EXPECT_EQ(kfl_test::splitHost(exact), kfl_test::modelOfHost(text));
    EXPECT_EQ(kfl::lookupStringIgnoreCase(exact, kfl::fileTransferProtocols), indexOf(text));
    return 0;
}
