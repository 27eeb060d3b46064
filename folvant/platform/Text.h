#pragma once

#include <string>
#include <string_view>

namespace folvant::platform {

// Case-insensitive text operations on UTF-8, with Unicode case folding (ICU). Pure-ASCII
// arguments take a fast path that gives the same answers without ICU.

// -1, 0 or 1, comparing the case-folded texts code point by code point.
int CaseInsensitiveCompare(std::string_view a, std::string_view b);
bool CaseInsensitiveEqual(std::string_view a, std::string_view b);
// Whether `needle` occurs in `haystack` ignoring case (an empty needle always does).
bool CaseInsensitiveContains(std::string_view haystack, std::string_view needle);
// Byte offset in `haystack` of the first case-insensitive match, or npos.
std::size_t CaseInsensitiveFind(std::string_view haystack, std::string_view needle);
bool CaseInsensitiveHasPrefix(std::string_view text, std::string_view prefix);
bool CaseInsensitiveHasSuffix(std::string_view text, std::string_view suffix);

// The case-folded form of a text (for preparing a search once and matching many times).
std::string CaseFold(std::string_view text);

// ASCII-only case mapping, for keywords and for the fast paths above: 'A'-'Z' become 'a'-'z'
// and every other byte (the bytes of a UTF-8 sequence included) stays as it is.
constexpr char AsciiLowerChar(char c) {
  const auto u = static_cast<unsigned char>(c);
  // One unsigned comparison tells a capital letter, without a branch in tight loops.
  return static_cast<char>(u + (static_cast<unsigned char>(u - 'A') < 26 ? 32 : 0));
}
std::string AsciiLower(std::string_view text);
// Equal after AsciiLowerChar, byte by byte.
bool AsciiEqualIgnoringCase(std::string_view a, std::string_view b);

// -1, 0 or 1 for any ordered values (numbers, texts compared bytewise).
template <typename T>
int ThreeWay(const T& a, const T& b) {
  return a < b ? -1 : (b < a ? 1 : 0);
}

}  // namespace folvant::platform
