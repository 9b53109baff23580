// Where a throw or an assertion happened, as a project-relative path without
// extension ("zo/kel/StringBase"; "./zo/kel/SafeInteger" for a header).
// ZO_SOURCE_FILE computes the path at compile time from __FILE__, so no throw
// site spells its own path and the strings are static for ever. Public:
// ZO_SOURCE_FILE and ZO_THROW, which the public templates and assertion
// macros expand in their callers' code; the rest is their machinery.
#pragma once

#include <cstddef>
#include <string_view>

namespace zo::kel::internal {

template <std::size_t N>
struct FixedText {
    char text[N]{};
    consteval FixedText(const char (&source)[N]) {
        for (std::size_t i = 0; i < N; ++i) text[i] = source[i];
    }
};

// The path below the last source root ("/src/" or "/tests/" in the tree, "/qkdynam/" once
// installed), without extension; headers keep their "./" include form.
constexpr std::string_view TrimmedSourcePath(std::string_view path) {
    std::size_t start = 0;
    for (std::string_view root : {std::string_view("/src/"), std::string_view("/tests/"), std::string_view("/qkdynam/")}) {
        if (auto at = path.rfind(root); at != std::string_view::npos && at + root.size() > start) {
            start = at + root.size();
        }
    }
    path.remove_prefix(start);
    if (auto slash = path.rfind('/'), dot = path.rfind('.');
        dot != std::string_view::npos && (slash == std::string_view::npos || dot > slash)) {
        path.remove_suffix(path.size() - dot);
    }
    return path;
}

constexpr bool IsHeaderPath(std::string_view path) {
    return path.ends_with(".h") || path.ends_with(".hpp");
}

template <std::size_t N>
struct SourcePathText {
    char text[N + 2]{};
    constexpr SourcePathText(const char (&file)[N]) {
        const std::string_view full(file, N - 1);
        const std::string_view trimmed = TrimmedSourcePath(full);
        std::size_t out = 0;
        if (IsHeaderPath(full)) {
            text[out++] = '.';
            text[out++] = '/';
        }
        for (char c : trimmed) text[out++] = c;
        text[out] = '\0';
    }
};

template <FixedText File>
inline constexpr SourcePathText<sizeof(File.text)> kSourcePath{File.text};

}  // namespace zo::kel::internal

#define ZO_SOURCE_FILE (::zo::kel::internal::kSourcePath<::zo::kel::internal::FixedText{__FILE__}>.text)

// Throws an exception of the zo::kel family (or any class whose constructor
// ends in (line, file)) stamped with this site: ZO_THROW(OutOfRange) or
// ZO_THROW(OutOfRange2, "reason").
#define ZO_THROW(Type, ...) throw Type(__VA_ARGS__ __VA_OPT__(, ) __LINE__, ZO_SOURCE_FILE)
