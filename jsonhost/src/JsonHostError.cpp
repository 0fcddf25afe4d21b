#include "JsonHostError.h"

JsonHostError::JsonHostError(std::string const& message) : std::runtime_error(message), reason_(message) {}

JsonHostError::JsonHostError(std::string const& message, std::string reason)
    : std::runtime_error(message), reason_(std::move(reason)) {}

JsonHostError JsonHostError::AtPosition(std::string const& source, int line, int column,
                                        std::string const& reason) {
    JsonHostError error(source + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " + reason,
                        reason);
    error.line_ = line;
    error.column_ = column;
    return error;
}

JsonHostError JsonHostError::AtField(std::string const& source, std::string const& pointer,
                                     std::string const& reason) {
    std::string const where = pointer.empty() ? std::string("(document)") : pointer;
    JsonHostError error(source + ": " + where + ": " + reason, reason);
    error.pointer_ = pointer;
    error.hasPointer_ = true;
    return error;
}
