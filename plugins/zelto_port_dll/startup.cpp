// Part of the shared library alone, so that tests link the rest without it: the loader builds and
// destroys the one instance.

#include "plugins/zelto_port_dll/process_objects.h"

namespace {

zelto::ProcessObjects g_process_objects;

}  // namespace
