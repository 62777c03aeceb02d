#pragma once

#include "simulated_field/planar_geometry.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

namespace tessaro {

/// A member that is missing, or is something else. Caught where a file is read.
struct WrongMember : std::runtime_error {
    using std::runtime_error::runtime_error;
};

inline WrongMember NoMember(const char* name, const char* kind) {
    return WrongMember("\"" + std::string(name) + "\" is no " + kind);
}

inline double NumberMember(const QJsonObject& object, const char* name) {
    const QJsonValue value = object.value(QLatin1String(name));
    if (!value.isDouble())
        throw NoMember(name, "number");
    return value.toDouble();
}

inline int IntegerMember(const QJsonObject& object, const char* name) {
    const double number = NumberMember(object, name);
    if (std::trunc(number) != number || std::abs(number) > std::numeric_limits<int>::max())
        throw NoMember(name, "whole number");
    return static_cast<int>(number);
}

inline QJsonArray ArrayMember(const QJsonObject& object, const char* name) {
    const QJsonValue value = object.value(QLatin1String(name));
    if (!value.isArray())
        throw NoMember(name, "list");
    return value.toArray();
}

/// [x, y].
inline Vertex PointOf(const QJsonValue& value, const char* name) {
    const QJsonArray pair = value.toArray();
    if (pair.size() != 2 || !pair.at(0).isDouble() || !pair.at(1).isDouble())
        throw NoMember(name, "place [x, y]");
    return {pair.at(0).toDouble(), pair.at(1).toDouble()};
}

} // namespace tessaro
