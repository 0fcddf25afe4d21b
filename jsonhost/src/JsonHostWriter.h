// Writes a document as JSON: the document as loaded plus a "result" object with what the library
// did to it.
#pragma once

#include <string>

class JsonHostState;

class JsonHostWriter {
public:
    static std::string ToText(JsonHostState const& state);
    // Writes to a temporary file beside path and renames it over path, so that path never holds
    // a half-written document. Throws JsonHostError when the file cannot be written.
    static void ToFile(JsonHostState const& state, std::string const& path);
};
