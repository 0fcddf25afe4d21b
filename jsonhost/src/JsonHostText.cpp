#include "JsonHostText.h"

#include <charconv>
#include <cstdint>

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isScalarValue(std::uint32_t c) {
    return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
}

void appendUtf8(std::string& out, std::uint32_t c) {
    if (!isScalarValue(c)) c = kReplacement;
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

}  // namespace

std::wstring JsonHostText::ToWide(std::string const& utf8) {
    std::wstring out;
    out.reserve(utf8.size());
    std::size_t i = 0;
    while (i < utf8.size()) {
        auto const lead = static_cast<unsigned char>(utf8[i]);
        int extra = 0;
        std::uint32_t c = 0;
        if (lead < 0x80) {
            c = lead;
        } else if ((lead & 0xE0) == 0xC0) {
            extra = 1;
            c = lead & 0x1F;
        } else if ((lead & 0xF0) == 0xE0) {
            extra = 2;
            c = lead & 0x0F;
        } else if ((lead & 0xF8) == 0xF0) {
            extra = 3;
            c = lead & 0x07;
        } else {
            out += static_cast<wchar_t>(kReplacement);
            ++i;
            continue;
        }
        bool valid = i + static_cast<std::size_t>(extra) < utf8.size();
        for (int k = 1; valid && k <= extra; ++k) {
            auto const next = static_cast<unsigned char>(utf8[i + k]);
            if ((next & 0xC0) != 0x80) {
                valid = false;
            } else {
                c = (c << 6) | (next & 0x3F);
            }
        }
        static constexpr std::uint32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
        if (!valid || !isScalarValue(c) || c < kSmallest[extra]) {
            out += static_cast<wchar_t>(kReplacement);
            ++i;
            continue;
        }
        if constexpr (sizeof(wchar_t) >= 4) {
            out += static_cast<wchar_t>(c);
        } else if (c >= 0x10000) {
            c -= 0x10000;
            out += static_cast<wchar_t>(0xD800 + (c >> 10));
            out += static_cast<wchar_t>(0xDC00 + (c & 0x3FF));
        } else {
            out += static_cast<wchar_t>(c);
        }
        i += 1 + static_cast<std::size_t>(extra);
    }
    return out;
}

std::string JsonHostText::ToUtf8(std::wstring const& wide) {
    std::string out;
    out.reserve(wide.size());
    for (std::size_t i = 0; i < wide.size(); ++i) {
        auto c = static_cast<std::uint32_t>(wide[i]);
        if constexpr (sizeof(wchar_t) < 4) {
            c &= 0xFFFF;
            if (c >= 0xD800 && c <= 0xDBFF && i + 1 < wide.size()) {
                auto const low = static_cast<std::uint32_t>(wide[i + 1]) & 0xFFFF;
                if (low >= 0xDC00 && low <= 0xDFFF) {
                    c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
                    ++i;
                }
            }
        }
        appendUtf8(out, c);
    }
    return out;
}

std::string JsonHostText::Number(double value) {
    char buffer[64];
    auto const result = std::to_chars(buffer, buffer + sizeof(buffer), value);
    return std::string(buffer, result.ptr);
}

std::string JsonHostText::Bool(bool value) {
    return value ? "true" : "false";
}

std::string JsonHostText::Quoted(std::wstring const& text) {
    std::string out = "\"";
    for (char c : ToUtf8(text)) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    out += '"';
    return out;
}
