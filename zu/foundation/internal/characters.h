// Classes of bytes as the "C" locale has them: bytes above 127 belong to none.
#pragma once

namespace zu::internal {

constexpr bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

constexpr bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

}  // namespace zu::internal
