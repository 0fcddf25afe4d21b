// UTF-8 to and from the wide strings of the library's interface.
//
// A wide string holds one code point per element where wchar_t has 32 bits, and UTF-16 code units
// (a code point above U+FFFF as a surrogate pair) where it has 16 bits.
//
// Bad input is never an error: whatever is not well-formed becomes U+FFFD (the replacement
// character) and the conversion goes on.
//
// Decoding accepts exactly the well-formed UTF-8 sequences: one to four bytes that encode a
// Unicode scalar value (U+0000 to U+10FFFF without the surrogates U+D800 to U+DFFF) in the fewest
// bytes possible. Everything else is replaced: overlong encodings (C0 80 for U+0000, E0 80 80),
// encoded surrogates (ED A0 80), code points beyond U+10FFFF (F4 90 80 80), bytes that never
// occur in UTF-8 (C0, C1, F5 to FF), stray continuation bytes (80 to BF) and sequences cut short
// by the end of the text or by a byte that does not continue them. The replacement is one U+FFFD
// per maximal ill-formed part: a byte that cannot start a sequence is one U+FFFD; a start byte
// followed by the continuation bytes that still fit a well-formed sequence, up to the first byte
// that does not fit (or the end of the text), is one U+FFFD, and decoding resumes at the byte that
// did not fit. So E2 82 41 (the euro sign cut short, then "A") gives U+FFFD, "A"; E0 80 80
// gives three U+FFFD (E0 cannot be followed by 80); F0 9F 98 at the end of the text gives one.
//
// Encoding writes each Unicode scalar value in its shortest form. Any other element becomes
// U+FFFD (EF BF BD): a surrogate (with 16-bit wchar_t, a lone one: a high surrogate directly
// followed by a low one is the pair's code point), a value beyond U+10FFFF or a negative value.
//
// Well-formed input round-trips: Decode(Encode(w)) == w for every wide string of scalar values
// (pairs with 16-bit wchar_t), and Encode(Decode(s)) == s for every well-formed UTF-8 string s.
#pragma once

#include <krlayout/krlayout_export.h>

#include <cstddef>
#include <string>

class KRLAYOUT_EXPORT KrUtf8Codec {
public:
    KrUtf8Codec() = delete;

    // The UTF-8 form of wide; elements that are not scalar values become U+FFFD.
    static std::string Encode(std::wstring const& wide);
    // The wide form of utf8; ill-formed parts become U+FFFD as described above.
    static std::wstring Decode(std::string const& utf8);
    // Decodes the sequence that starts at utf8[pos]. A well-formed sequence: codePoint = its
    // value, pos moves past it, true. An ill-formed part: codePoint = U+FFFD, pos moves past it
    // (at least one byte), false. pos at or past the end: codePoint = U+FFFD, pos stays, false.
    // For callers that treat bad input their own way; Decode is this step repeated.
    static bool DecodeNext(std::string const& utf8, std::size_t& pos, char32_t& codePoint);
};
