include(HostHeaders)
zelto_host_headers(CLI11::CLI11 CLI)
