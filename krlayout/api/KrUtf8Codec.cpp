#include <krlayout/api/KrUtf8Codec.h>

#include <type_traits>

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsScalarValue(char32_t c)
{
    return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
}

void AppendUtf8(std::string& out, char32_t c)
{
    if (!IsScalarValue(c)) {
        c = kReplacement;
    }
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

void AppendWide(std::wstring& out, char32_t c)
{
    if constexpr (sizeof(wchar_t) >= 4) {
        out += static_cast<wchar_t>(c);
    } else if (c >= 0x10000) {
        c -= 0x10000;
        out += static_cast<wchar_t>(0xD800 + (c >> 10));
        out += static_cast<wchar_t>(0xDC00 + (c & 0x3FF));
    } else {
        out += static_cast<wchar_t>(c);
    }
}

char32_t CodeUnit(wchar_t c)
{
    return static_cast<char32_t>(static_cast<std::make_unsigned_t<wchar_t>>(c));
}

}  // namespace

std::string KrUtf8Codec::Encode(std::wstring const& wide)
{
    std::string out;
    out.reserve(wide.size());
    for (std::size_t i = 0; i < wide.size(); ++i) {
        char32_t c = CodeUnit(wide[i]);
        if constexpr (sizeof(wchar_t) < 4) {
            // UTF-16: a high surrogate directly followed by a low one is one code point; any
            // other surrogate is left alone here and replaced as not a scalar value.
            if (c >= 0xD800 && c <= 0xDBFF && i + 1 < wide.size()) {
                char32_t const low = CodeUnit(wide[i + 1]);
                if (low >= 0xDC00 && low <= 0xDFFF) {
                    c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
                    ++i;
                }
            }
        }
        AppendUtf8(out, c);
    }
    return out;
}

std::wstring KrUtf8Codec::Decode(std::string const& utf8)
{
    std::wstring out;
    out.reserve(utf8.size());
    std::size_t pos = 0;
    while (pos < utf8.size()) {
        char32_t c = 0;
        DecodeNext(utf8, pos, c);
        AppendWide(out, c);
    }
    return out;
}

// The start byte fixes the number of continuation bytes and the range of the first of them (the
// ranges rule out overlongs, surrogates and values beyond U+10FFFF without decoding first); every
// later continuation byte lies in 80..BF. Reading stops at the first byte out of its range, which
// is where the ill-formed part ends.
bool KrUtf8Codec::DecodeNext(std::string const& utf8, std::size_t& pos, char32_t& codePoint)
{
    codePoint = kReplacement;
    if (pos >= utf8.size()) {
        return false;
    }
    auto const lead = static_cast<unsigned char>(utf8[pos]);
    if (lead < 0x80) {
        codePoint = lead;
        ++pos;
        return true;
    }
    int need = 0;
    char32_t c = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        need = 1;
        c = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        need = 2;
        c = lead & 0x0F;
        if (lead == 0xE0) {
            low = 0xA0;  // below: overlong
        } else if (lead == 0xED) {
            high = 0x9F;  // above: surrogates
        }
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        need = 3;
        c = lead & 0x07;
        if (lead == 0xF0) {
            low = 0x90;  // below: overlong
        } else if (lead == 0xF4) {
            high = 0x8F;  // above: beyond U+10FFFF
        }
    } else {
        ++pos;  // a continuation byte, or a byte that never occurs in UTF-8
        return false;
    }
    std::size_t next = pos + 1;
    for (int k = 0; k < need; ++k) {
        if (next >= utf8.size()) {
            pos = next;
            return false;
        }
        auto const b = static_cast<unsigned char>(utf8[next]);
        if (b < low || b > high) {
            pos = next;
            return false;
        }
        c = (c << 6) | (b & 0x3F);
        ++next;
        low = 0x80;
        high = 0xBF;
    }
    codePoint = c;
    pos = next;
    return true;
}
