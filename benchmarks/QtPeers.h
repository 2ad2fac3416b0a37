// SPDX-License-Identifier: Apache-2.0
#pragma once

// Qt's player and badge. In a file of their own: the compiler of Qt signals reads it with all that it includes, and
// does not understand C++20.

#include <QtCore/QObject>

namespace vorlan::benchmarks {

/// Qt's player.
class QtPlayer : public QObject {
    Q_OBJECT
public:
    void pause() { Q_EMIT didPause(true); }

Q_SIGNALS:
    void didPause(bool didPause);
};

/// Counts pauses that Qt's player tells of.
class QtBadge : public QObject {
    Q_OBJECT
public:
    void playerDidPause(bool didPause);

private:
    long pauses_ = 0;
};

} // namespace vorlan::benchmarks
