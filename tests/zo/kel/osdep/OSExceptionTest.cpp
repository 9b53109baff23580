#include "zo/kel/osdep/OSException.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <type_traits>

namespace {

using zo::kel::osdep::OSException;
using zo::kel::osdep::PosixError;

TEST(OSException, CodesAndTexts) {
    const OSException unknown;
    EXPECT_STREQ(unknown.what(), "Unknown error");
    EXPECT_EQ(unknown.whatcode(), 0u);
    EXPECT_EQ(unknown.getErrorCode(), 42);
    EXPECT_EQ(unknown.getLine(), 0u);
    EXPECT_EQ(unknown.getFile(), nullptr);

    const OSException given("disk on fire", 5);
    EXPECT_STREQ(given.what(), "disk on fire");
    EXPECT_EQ(given.whatcode(), 5u);
    EXPECT_EQ(given.getErrorCode(), 42);
}

TEST(PosixError, MapsErrnoToCoarseCodes) {
    struct Row {
        int error;
        std::int32_t code;
    };
    for (const Row row : {Row{2, 7}, Row{0, 0}, Row{13, 42}, Row{22, 42}}) {
        const PosixError error(row.error);
        EXPECT_EQ(error.getErrorCode(), row.code) << row.error;
        EXPECT_EQ(error.whatcode(), static_cast<unsigned int>(row.error));
        EXPECT_STREQ(error.what(), std::strerror(row.error));
        // Through the base the same answers come back.
        const OSException& base = error;
        EXPECT_EQ(base.getErrorCode(), row.code);
        EXPECT_EQ(base.whatcode(), static_cast<unsigned int>(row.error));
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
