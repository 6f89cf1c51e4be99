// Values that are sent to an engine.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <dorcpp/rowblock.h>

namespace DorCPP {

// A parameter value with its bytes. Text is UTF-8.
struct Parameter {
    Value::Kind kind = Value::Null;
    int64_t integer = 0;
    double real = 0;
    std::string bytes;
    // The bytes of a long value that lie elsewhere and outlive the statement, instead of `bytes`.
    std::string_view outside = {};

    std::string_view allBytes() const { return outside.data() ? outside : bytes; }
};
// The value, whose bytes stay where they are.
inline Value valueOf(const Parameter& parameter)
{
    Value value;
    value.kind = parameter.kind;
    value.integer = parameter.integer;
    value.real = parameter.real;
    const std::string_view bytes = parameter.allBytes();
    value.data = bytes.data();
    value.held = value.length = bytes.size();
    return value;
}

// A value with bytes of its own.
inline Parameter parameterOf(const Value& value)
{
    Parameter parameter;
    parameter.kind = value.kind;
    parameter.integer = value.integer;
    parameter.real = value.real;
    parameter.bytes = value.bytes();
    return parameter;
}

using Parameters = std::vector<std::pair<int, Parameter>>; // by parameter number, from 1

} // namespace DorCPP
