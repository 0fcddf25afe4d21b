// The text of the arguments of each host request as the recorder logs it.
#pragma once

#include <string>

class JsonHostText {
public:
    // The shortest text that reads back as the same double.
    static std::string Number(double value);
    static std::string Bool(bool value);
    // A double-quoted string in UTF-8, quotes and backslashes escaped.
    static std::string Quoted(std::wstring const& text);
};
