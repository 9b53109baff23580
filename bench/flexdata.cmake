# msgpack-c++ is used header-only and without Boost (Debian: libmsgpack-cxx-dev).
find_path(MSGPACK_INCLUDE_DIR msgpack.hpp REQUIRED)
target_include_directories(bench_${name} SYSTEM PRIVATE ${MSGPACK_INCLUDE_DIR})
target_compile_definitions(bench_${name} PRIVATE MSGPACK_NO_BOOST)
# The library's calls to malloc and realloc go through counters, to show
# that a scalar set on a value of its own type allocates nothing.
target_link_options(bench_${name} PRIVATE -Wl,--wrap=malloc -Wl,--wrap=realloc)
