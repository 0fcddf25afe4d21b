// The error thrown when a route document cannot be loaded or saved.
#pragma once

#include <stdexcept>
#include <string>

class JsonHostError : public std::runtime_error {
public:
    // A plain message (files that cannot be read or written, empty documents).
    explicit JsonHostError(std::string const& message);

    // Text that is not JSON: "<source>:<line>:<column>: <reason>". Line and column count from 1;
    // the column counts characters, not bytes.
    static JsonHostError AtPosition(std::string const& source, int line, int column,
                                    std::string const& reason);
    // JSON that is not a route document: "<source>: <pointer>: <reason>", pointer being the
    // JSON pointer of the offending field ("" for the document itself).
    static JsonHostError AtField(std::string const& source, std::string const& pointer,
                                 std::string const& reason);

    // 0 when the error has no position.
    int line() const { return line_; }
    int column() const { return column_; }
    // The JSON pointer of the field; empty when the error is not about a field.
    std::string const& pointer() const { return pointer_; }
    bool hasPointer() const { return hasPointer_; }
    // The message without source and position.
    std::string const& reason() const { return reason_; }

private:
    JsonHostError(std::string const& message, std::string reason);

    int line_ = 0;
    int column_ = 0;
    std::string pointer_;
    bool hasPointer_ = false;
    std::string reason_;
};
