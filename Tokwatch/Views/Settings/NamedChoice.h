#pragma once

#include <QObject>
#include <QString>

namespace tokwatch {

/// One of several, to be chosen by its id.
struct NamedChoice {
    Q_GADGET
    Q_PROPERTY(QString id MEMBER id)
    Q_PROPERTY(QString label MEMBER label)
  public:
    QString id;
    QString label;
    friend bool operator==(const NamedChoice&, const NamedChoice&) = default;
};

} // namespace tokwatch
