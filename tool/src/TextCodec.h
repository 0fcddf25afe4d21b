// UTF-8 to and from the wide strings of the library's interface.
#pragma once

#include <string>

namespace krtool {

class TextCodec {
public:
    // A value that is not a Unicode scalar value becomes U+FFFD.
    static std::string toUtf8(std::wstring const& wide);
    // A malformed sequence becomes U+FFFD.
    static std::wstring toWide(std::string const& utf8);
};

}  // namespace krtool
