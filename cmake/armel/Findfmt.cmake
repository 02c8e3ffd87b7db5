include(HostHeaders)
zelto_host_headers(fmt::fmt fmt FMT_HEADER_ONLY)
