# msgpack-c++ is used header-only and without Boost (Debian: libmsgpack-cxx-dev).
find_path(MSGPACK_INCLUDE_DIR msgpack.hpp REQUIRED)
target_include_directories(bench_${name} SYSTEM PRIVATE ${MSGPACK_INCLUDE_DIR})
target_compile_definitions(bench_${name} PRIVATE MSGPACK_NO_BOOST)

# nlohmann-json's msgpack form is the third peer (Debian: nlohmann-json3-dev).
find_package(nlohmann_json 3 REQUIRED)
target_link_libraries(bench_${name} PRIVATE nlohmann_json::nlohmann_json)
