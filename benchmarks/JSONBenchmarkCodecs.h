// SPDX-License-Identifier: Apache-2.0
#pragma once

// The same records as JSON and back, as each library has its users do it.

#include "benchmarks/support/SampleRecords.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorlan::benchmarks {

std::string encodeByHand(const Records& records);
Records decodeByHand(std::string_view text);
Records decodeOnDemand(std::string_view text);

std::string encodeByNlohmann(const Records& records);
Records decodeByNlohmann(std::string_view text);

std::string encodeByRapidJSON(const Records& records);
Records decodeByRapidJSON(std::string_view text);

std::string encodeByPoco(const Records& records);
Records decodeByPoco(std::string_view text);

/// A record as a host that uses Qt has it.
struct QtRecord {
    qint64 id = 0;
    QString name;
    QString email;
    bool isActive = false;
    quint32 visits = 0;
    double balance = 0;
    double rating = 0;
    std::optional<QString> note;
    QStringList tags;
    Position position;
};

std::vector<QtRecord> qtRecords(const Records& records);
Records recordsOf(const std::vector<QtRecord>& records);
QByteArray encodeByQt(const std::vector<QtRecord>& records);
std::vector<QtRecord> decodeByQt(std::string_view text);

} // namespace vorlan::benchmarks
