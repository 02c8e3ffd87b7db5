#include "plugins/zelto_port_dll/connection.h"

namespace zelto {

constinit ConnectionState g_connection;

}  // namespace zelto
