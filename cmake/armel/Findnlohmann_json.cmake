include(HostHeaders)
zelto_host_headers(nlohmann_json::nlohmann_json nlohmann)
