# 32-bit ARM of the handhelds (ARMv5TE, soft float, plain char unsigned), run by qemu's user mode.
# Packages g++-arm-linux-gnueabi, qemu-user and googletest; scripts/test armel installs them.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER arm-linux-gnueabi-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabi-g++)
set(CMAKE_C_FLAGS_INIT "-march=armv5te -mfloat-abi=soft")
# Not told that g++ 7 changed how some arguments are passed: all is built by one compiler.
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_C_FLAGS_INIT} -Wno-psabi")

set(zelto_target_root /usr/arm-linux-gnueabi)
set(CMAKE_CROSSCOMPILING_EMULATOR "qemu-arm;-L;${zelto_target_root}")

# Libraries and headers are the target's; what the host has for it is found by the modules here.
set(CMAKE_FIND_ROOT_PATH "${zelto_target_root}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} "${zelto_target_root}/lib/pkgconfig")
list(PREPEND CMAKE_MODULE_PATH "${CMAKE_CURRENT_LIST_DIR}")
