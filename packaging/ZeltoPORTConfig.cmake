include("${CMAKE_CURRENT_LIST_DIR}/ZeltoPORTTargets.cmake")
