include("${CMAKE_CURRENT_LIST_DIR}/ZeltoPORTTargets.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/ZeltoAddClientTest.cmake")
