#include "TextCodec.h"

#include <type_traits>

namespace krtool {

namespace {

constexpr unsigned long kReplacement = 0xFFFD;

void append(std::string& out, unsigned long cp)
{
    if (cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
        cp = kReplacement;
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

}  // namespace

std::string TextCodec::toUtf8(std::wstring const& wide)
{
    std::string out;
    for (wchar_t c : wide)
        append(out, static_cast<unsigned long>(static_cast<std::make_unsigned_t<wchar_t>>(c)));
    return out;
}

std::wstring TextCodec::toWide(std::string const& utf8)
{
    std::wstring out;
    size_t i = 0;
    while (i < utf8.size()) {
        unsigned char const c = static_cast<unsigned char>(utf8[i]);
        int extra = 0;
        unsigned long cp = 0;
        unsigned long min = 0;
        if (c < 0x80) {
            out += static_cast<wchar_t>(c);
            ++i;
            continue;
        } else if ((c & 0xE0) == 0xC0) {
            extra = 1;
            cp = c & 0x1F;
            min = 0x80;
        } else if ((c & 0xF0) == 0xE0) {
            extra = 2;
            cp = c & 0x0F;
            min = 0x800;
        } else if ((c & 0xF8) == 0xF0) {
            extra = 3;
            cp = c & 0x07;
            min = 0x10000;
        } else {
            out += static_cast<wchar_t>(kReplacement);
            ++i;
            continue;
        }
        bool ok = i + static_cast<size_t>(extra) < utf8.size();
        for (int k = 1; ok && k <= extra; ++k) {
            unsigned char const n = static_cast<unsigned char>(utf8[i + static_cast<size_t>(k)]);
            if ((n & 0xC0) != 0x80)
                ok = false;
            else
                cp = (cp << 6) | (n & 0x3F);
        }
        if (!ok || cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
            out += static_cast<wchar_t>(kReplacement);
            ++i;
            continue;
        }
        out += static_cast<wchar_t>(cp);
        i += static_cast<size_t>(extra) + 1;
    }
    return out;
}

}  // namespace krtool
