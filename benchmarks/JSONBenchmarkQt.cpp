// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/JSONBenchmarkCodecs.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>
#include <iterator>

namespace vorlan::benchmarks {

namespace {

QtRecord qtRecord(const Record& record) {
    QtRecord made{record.id,
                  QString::fromStdString(record.name),
                  QString::fromStdString(record.email),
                  record.isActive,
                  record.visits,
                  record.balance,
                  record.rating,
                  {},
                  {},
                  record.position};
    if (record.note) made.note = QString::fromStdString(*record.note);
    for (const auto& tag : record.tags) made.tags.push_back(QString::fromStdString(tag));
    return made;
}

Record recordOf(const QtRecord& record) {
    Record made{record.id,
                record.name.toStdString(),
                record.email.toStdString(),
                record.isActive,
                record.visits,
                record.balance,
                record.rating,
                {},
                {},
                record.position};
    if (record.note) made.note = record.note->toStdString();
    for (const auto& tag : record.tags) made.tags.push_back(tag.toStdString());
    return made;
}

QJsonObject objectOf(const QtRecord& record) {
    QJsonObject object{{"id", record.id},
                       {"name", record.name},
                       {"email", record.email},
                       {"isActive", record.isActive},
                       {"visits", static_cast<qint64>(record.visits)},
                       {"balance", record.balance},
                       {"rating", record.rating},
                       {"tags", QJsonArray::fromStringList(record.tags)},
                       {"position", QJsonObject{{"latitude", record.position.latitude},
                                                {"longitude", record.position.longitude}}}};
    if (record.note) object.insert("note", *record.note);
    return object;
}

QtRecord decode(const QJsonObject& object) {
    QtRecord record;
    record.id = object["id"].toInteger();
    record.name = object["name"].toString();
    record.email = object["email"].toString();
    record.isActive = object["isActive"].toBool();
    record.visits = static_cast<quint32>(object["visits"].toInteger());
    record.balance = object["balance"].toDouble();
    record.rating = object["rating"].toDouble();
    if (const auto note = object["note"]; note.isString()) record.note = note.toString();
    for (const auto& tag : object["tags"].toArray()) record.tags.push_back(tag.toString());
    const auto position = object["position"].toObject();
    record.position = {position["latitude"].toDouble(), position["longitude"].toDouble()};
    return record;
}

} // namespace

std::vector<QtRecord> qtRecords(const Records& records) {
    std::vector<QtRecord> made;
    std::transform(records.begin(), records.end(), std::back_inserter(made), qtRecord);
    return made;
}

Records recordsOf(const std::vector<QtRecord>& records) {
    Records made;
    for (const auto& record : records) made.push_back(recordOf(record));
    return made;
}

QByteArray encodeByQt(const std::vector<QtRecord>& records) {
    QJsonArray array;
    for (const auto& record : records) array.append(objectOf(record));
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

std::vector<QtRecord> decodeByQt(std::string_view text) {
    const auto bytes = QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()));
    const auto array = QJsonDocument::fromJson(bytes).array();
    std::vector<QtRecord> records;
    records.reserve(static_cast<std::size_t>(array.size()));
    for (const auto& value : array) records.push_back(decode(value.toObject()));
    return records;
}

} // namespace vorlan::benchmarks
