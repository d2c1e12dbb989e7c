// SPDX-License-Identifier: MIT
#include "Session/ServerFeatures.h"

#include "Base/Json.h"

#include <QHash>

namespace orvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mostFeatures = 1000;

} // namespace

ServerFeatures announcedFeatures(const QJsonObject &federation) {
    static const QHash<QString, ServerFeature> known{
        {u"assistant-contact"_s, ServerFeature::assistantContact}};
    ServerFeatures features;
    const QStringList announced = json::texts(federation, u"features").value_or(QStringList());
    if (announced.size() > mostFeatures)
        return features;
    for (const QString &name : announced) {
        if (const auto feature = known.constFind(name); feature != known.constEnd())
            features.insert(*feature);
    }
    return features;
}

} // namespace orvane
