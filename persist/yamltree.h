// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QVector>

#include <memory>

/// A value of a YAML document. Aliases lead to the value they stand for, so the values form no tree but never a circle.
struct YamlValue
{
    enum class Kind { Text, List, Map };

    Kind kind = Kind::Text;
    int line = 0; ///< From 1.
    QString text; ///< Empty also for null.
    QVector<std::shared_ptr<const YamlValue>> items; ///< Of a list.
    QHash<QString, std::shared_ptr<const YamlValue>> members; ///< Of a map.
    int height = 1; ///< Levels of values from here down.
    int values = 1; ///< Values from here down, those behind aliases counted each time.

    /// The member \a key of a map, or null.
    const YamlValue *member(const char *key) const { return members.value(QLatin1String(key)).get(); }
};

/// Nesting, aliases followed, beyond which a document is refused.
constexpr int maximumYamlDepth = 32;

/// Values, those behind aliases counted each time, beyond which a document is refused: an alias costs a few bytes, and a few of
/// them can stand for more values than fit into any memory.
constexpr int maximumYamlValues = 2000000;

/// Reads the first document in \a text. Null, with line and reason in \a error, when it is wrong or beyond the limits; these are
/// checked as it is read, before any alias is followed.
std::shared_ptr<const YamlValue> readYaml(const QByteArray &text, QString *error);
