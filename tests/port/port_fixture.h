// A connection on the scripted platform, as after a successful ZeltoNavPort_Init.

#ifndef ZELTO_TESTS_PORT_PORT_FIXTURE_H
#define ZELTO_TESTS_PORT_PORT_FIXTURE_H

#include <gtest/gtest.h>

#include "common/text/codepage.h"
#include "plugins/zelto_port_dll/connection.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tests/support/scripted_coredll.h"

namespace zelto::test {

using Lines = std::vector<std::string>;

inline void Restart() {
    Scripted() = {};
    g_connection = {};
    g_connection.window = FindWindowW(g_connection.window_class, nullptr);
    SetCurrentCodepage(CP_UTF8);
    Scripted().calls.clear();
}

class PortTest : public testing::Test {
  protected:
    PortTest() { Restart(); }
};

}  // namespace zelto::test

#endif
