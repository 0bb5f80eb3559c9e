// std::source_location for clang 14. libstdc++ 12 declares it only for a
// compiler with __builtin_source_location, which came with clang 15, so
// with clang 14 the module's <source_location> includes bring nothing. The
// fuzz build includes this header ahead of every C++ source: it stands in
// with the builtins clang 14 has, for what the module uses (the file, line,
// routine and column of a call). With a compiler that has the builtin, it
// adds nothing.
#pragma once

#include <cstdint>
#include <source_location>

#ifndef __cpp_lib_source_location
namespace std {

struct source_location {
    static constexpr source_location current(const char *file = __builtin_FILE(),
                                             const char *function = __builtin_FUNCTION(),
                                             uint_least32_t line = __builtin_LINE(),
                                             uint_least32_t column = __builtin_COLUMN()) noexcept
    {
        source_location where;
        where.file_ = file;
        where.function_ = function;
        where.line_ = line;
        where.column_ = column;
        return where;
    }
    constexpr source_location() noexcept = default;
    constexpr const char *file_name() const noexcept { return file_; }
    constexpr const char *function_name() const noexcept { return function_; }
    constexpr uint_least32_t line() const noexcept { return line_; }
    constexpr uint_least32_t column() const noexcept { return column_; }

private:
    const char *file_ = "";
    const char *function_ = "";
    uint_least32_t line_ = 0;
    uint_least32_t column_ = 0;
};

} // namespace std
#endif
