#pragma once

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace tessaro {

struct PlaceOnWafer {
    double x = 0.0; // um
    double y = 0.0;
};

/// A single layer of some size, at most so far from a place along X and along Y.
inline PlaceOnWafer SingleLayerNear(PlaceOnWafer place, double reachUm, const std::string& truthFile) {
    QFile file(QString::fromStdString(truthFile));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    for (const QJsonValue value : QJsonDocument::fromJson(file.readAll()).object()["flakes"].toArray()) {
        const QJsonObject known = value.toObject();
        const QJsonArray centre = known["centre"].toArray();
        const PlaceOnWafer flake = {centre[0].toDouble(), centre[1].toDouble()};
        const bool isNear = std::abs(flake.x - place.x) < reachUm && std::abs(flake.y - place.y) < reachUm;
        if (known["layers"].toInt() == 1 && known["area"].toDouble() > 250.0 && isNear)
            return flake;
    }
    ADD_FAILURE() << "the wafer has no such flake";
    return {};
}

} // namespace tessaro
