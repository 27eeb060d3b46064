#include "folvant/platform/Text.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <vector>

namespace folvant::platform {
namespace {

bool IsAscii(std::string_view text) {
  for (char c : text) {
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  }
  return true;
}

// The folded text and, for each of its bytes, the offset in the original text of the code
// point that produced it (plus one final entry for the end of the text).
struct FoldedText {
  std::string text;
  std::vector<std::size_t> origin;
};

FoldedText FoldWithOrigins(std::string_view text) {
  FoldedText folded;
  folded.text.reserve(text.size());
  folded.origin.reserve(text.size() + 1);
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  const int32_t length = static_cast<int32_t>(text.size());
  int32_t i = 0;
  while (i < length) {
    const int32_t start = i;
    UChar32 c;
    U8_NEXT(bytes, i, length, c);
    if (c < 0) {
      // An invalid byte sequence folds to itself, byte for byte.
      for (int32_t j = start; j < i; ++j) {
        folded.text.push_back(text[static_cast<std::size_t>(j)]);
        folded.origin.push_back(static_cast<std::size_t>(start));
      }
      continue;
    }
    if (c < 0x80) {
      folded.text.push_back(AsciiLowerChar(static_cast<char>(c)));
      folded.origin.push_back(static_cast<std::size_t>(start));
      continue;
    }
    std::string piece;
    icu::UnicodeString(c).foldCase().toUTF8String(piece);
    folded.text += piece;
    folded.origin.insert(folded.origin.end(), piece.size(), static_cast<std::size_t>(start));
  }
  folded.origin.push_back(text.size());
  return folded;
}

}  // namespace

std::string AsciiLower(std::string_view text) {
  std::string lowered(text);
  for (char& c : lowered) c = AsciiLowerChar(c);
  return lowered;
}

bool AsciiEqualIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return AsciiLowerChar(x) == AsciiLowerChar(y);
         });
}

std::string CaseFold(std::string_view text) {
  if (IsAscii(text)) return AsciiLower(text);
  return FoldWithOrigins(text).text;
}

int CaseInsensitiveCompare(std::string_view a, std::string_view b) {
  if (IsAscii(a) && IsAscii(b)) {
    const std::size_t n = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < n; ++i) {
      const char x = AsciiLowerChar(a[i]), y = AsciiLowerChar(b[i]);
      if (x != y) return static_cast<unsigned char>(x) < static_cast<unsigned char>(y) ? -1 : 1;
    }
    return ThreeWay(a.size(), b.size());
  }
  // UTF-8 byte order is code point order, so the folded texts compare bytewise.
  const int c = CaseFold(a).compare(CaseFold(b));
  return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

bool CaseInsensitiveEqual(std::string_view a, std::string_view b) {
  if (IsAscii(a) && IsAscii(b)) return AsciiEqualIgnoringCase(a, b);
  return CaseFold(a) == CaseFold(b);
}

std::size_t CaseInsensitiveFind(std::string_view haystack, std::string_view needle) {
  if (needle.empty()) return 0;
  if (IsAscii(haystack) && IsAscii(needle)) {
    const auto it =
        std::search(haystack.begin(), haystack.end(), needle.begin(), needle.end(),
                    [](char x, char y) { return AsciiLowerChar(x) == AsciiLowerChar(y); });
    return it == haystack.end() ? std::string_view::npos
                                : static_cast<std::size_t>(it - haystack.begin());
  }
  const FoldedText folded = FoldWithOrigins(haystack);
  const std::size_t at = folded.text.find(CaseFold(needle));
  return at == std::string::npos ? std::string_view::npos : folded.origin[at];
}

bool CaseInsensitiveContains(std::string_view haystack, std::string_view needle) {
  return CaseInsensitiveFind(haystack, needle) != std::string_view::npos;
}

bool CaseInsensitiveHasPrefix(std::string_view text, std::string_view prefix) {
  if (IsAscii(text) && IsAscii(prefix)) {
    return text.size() >= prefix.size() &&
           CaseInsensitiveEqual(text.substr(0, prefix.size()), prefix);
  }
  const std::string t = CaseFold(text), p = CaseFold(prefix);
  return t.compare(0, p.size(), p) == 0 && t.size() >= p.size();
}

bool CaseInsensitiveHasSuffix(std::string_view text, std::string_view suffix) {
  if (IsAscii(text) && IsAscii(suffix)) {
    return text.size() >= suffix.size() &&
           CaseInsensitiveEqual(text.substr(text.size() - suffix.size()), suffix);
  }
  const std::string t = CaseFold(text), s = CaseFold(suffix);
  return t.size() >= s.size() && t.compare(t.size() - s.size(), s.size(), s) == 0;
}

}  // namespace folvant::platform
