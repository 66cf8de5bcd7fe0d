# Everything outside the project that the library is built with. A missing one stops here, by name.
find_package(Threads REQUIRED)
find_package(Boost 1.74 REQUIRED COMPONENTS thread)
find_package(fmt 9.1 REQUIRED)
find_package(TBB REQUIRED)
find_package(Imath REQUIRED)
find_package(FLEX 2.6 REQUIRED)
find_package(BISON 3.8 REQUIRED)

# Crypto++ comes with a pkg-config file and no CMake package.
find_path(CRYPTOPP_INCLUDE_DIR cryptopp/blake2.h REQUIRED)
find_library(CRYPTOPP_LIBRARY cryptopp REQUIRED)
add_library(vornath_cryptopp INTERFACE)
target_include_directories(vornath_cryptopp SYSTEM INTERFACE "${CRYPTOPP_INCLUDE_DIR}")
target_link_libraries(vornath_cryptopp INTERFACE "${CRYPTOPP_LIBRARY}")
