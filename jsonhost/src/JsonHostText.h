// Text conversions: UTF-8 to and from the wide strings of the host interfaces, and the formatting
// of request arguments.
#pragma once

#include <string>

class JsonHostText {
public:
    // Decodes UTF-8 (already validated by the JSON parser); a malformed byte becomes U+FFFD.
    static std::wstring ToWide(std::string const& utf8);
    // Encodes as UTF-8; a value that is not a Unicode scalar value becomes U+FFFD.
    static std::string ToUtf8(std::wstring const& wide);
    // The shortest text that reads back as the same double.
    static std::string Number(double value);
    static std::string Bool(bool value);
    // A double-quoted string, quotes and backslashes escaped.
    static std::string Quoted(std::wstring const& text);
};
