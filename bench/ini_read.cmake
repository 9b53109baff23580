# inih is the peer of bench_ini_read only; the library does not use it.
find_package(PkgConfig REQUIRED)
pkg_check_modules(INIH REQUIRED IMPORTED_TARGET inih)
target_link_libraries(bench_${name} PRIVATE PkgConfig::INIH)
