// Reads a route document from JSON text: parses it, checks every field and builds the model.
#pragma once

#include "JsonHostModel.h"

#include <nlohmann/json.hpp>

#include <string>

class JsonHostReader {
public:
    struct Result {
        JsonHostModel model;
        nlohmann::ordered_json document;   // the document as given, without a "result" member
    };

    // Throws JsonHostError naming source, and the line and column or the field at fault.
    static Result Read(std::string const& text, std::string const& source);
    // Reads the file at path; source in messages is the path.
    static Result ReadFile(std::string const& path);
};
