#include "JsonHostText.h"

#include <krlayout/api/KrUtf8Codec.h>

#include <charconv>

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
    for (char c : KrUtf8Codec::Encode(text)) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    out += '"';
    return out;
}
