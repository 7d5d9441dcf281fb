# Compiles for 64-bit ARM with Debian's cross compiler, against the libraries of
# that architecture installed beside this system's own.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(PKG_CONFIG_EXECUTABLE aarch64-linux-gnu-pkg-config CACHE FILEPATH "")
# CPack would take the architecture of the machine that it runs on.
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
