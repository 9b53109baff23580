# msgpack-c++ is the peer of the cluster round trip, header-only and without
# Boost (Debian: libmsgpack-cxx-dev).
find_path(MSGPACK_INCLUDE_DIR msgpack.hpp REQUIRED)
target_include_directories(bench_${name} SYSTEM PRIVATE ${MSGPACK_INCLUDE_DIR})
target_compile_definitions(bench_${name} PRIVATE MSGPACK_NO_BOOST)
