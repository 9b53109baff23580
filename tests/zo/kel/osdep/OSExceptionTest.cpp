#include "zo/kel/osdep/OSException.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <tuple>
#include <type_traits>
#include <utility>

namespace {

using zo::kel::osdep::OSException;
using zo::kel::osdep::PosixError;

TEST(OSException, CodesAndTexts) {
    const OSException unknown;
    EXPECT_STREQ(unknown.what(), "Unknown error");
    EXPECT_EQ(std::tuple(unknown.whatcode(), unknown.getErrorCode(), unknown.getLine(), unknown.getFile()),
              std::tuple(0u, 42, 0u, nullptr));
    const OSException given("disk on fire", 5);
    EXPECT_STREQ(given.what(), "disk on fire");
    EXPECT_EQ(std::pair(given.whatcode(), given.getErrorCode()), std::pair(5u, 42));
}

TEST(PosixError, MapsErrnoToCoarseCodes) {
    struct Row {
        int error;
        std::int32_t code;
    };
    for (const Row row : {Row{2, 7}, Row{0, 0}, Row{13, 42}, Row{22, 42}}) {
        const PosixError error(row.error);
        const OSException& base = error;  // through the base the same answers come back
        const auto expected = std::pair(row.code, static_cast<unsigned int>(row.error));
        EXPECT_EQ(std::pair(error.getErrorCode(), error.whatcode()), expected) << row.error;
        EXPECT_EQ(std::pair(base.getErrorCode(), base.whatcode()), expected) << row.error;
        EXPECT_STREQ(error.what(), std::strerror(row.error));
    }
    const PosixError named("open failed", ENOENT);
    EXPECT_STREQ(named.what(), "open failed");
    EXPECT_EQ(named.getErrorCode(), 7);
}

TEST(PosixError, DefaultReadsErrnoAtConstruction) {
    errno = EACCES;
    const PosixError error;
    errno = 0;
    EXPECT_EQ(error.whatcode(), static_cast<unsigned int>(EACCES));
    EXPECT_STREQ(error.what(), std::strerror(EACCES));
}

// Callers catch the library's exception base.
static_assert(std::is_base_of_v<zo::kel::exception::Exception, PosixError>);

}  // namespace
