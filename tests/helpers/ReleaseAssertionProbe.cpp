// Fails one release assertion in a program linked to the shared library, as
// a product is, and started in the directory under test: the report reaches
// standard error only when the library read the switch as on at load.
#include <cstdio>

#include "zo/kel/osdep/Assertion.h"

int main() {
    ZO_RELEASE_ASSERT_MSG(false, "probe");
    std::puts("probe done");
    return 0;
}
