#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>
#include <qqmlregistration.h>

namespace tokwatch {

/// A library that the program stands on.
struct Credit {
    Q_GADGET
    Q_PROPERTY(QString name MEMBER name)
    Q_PROPERTY(QString use MEMBER use)
    Q_PROPERTY(QString licence MEMBER licence)
  public:
    QString name;
    QString use;
    QString licence;
    friend bool operator==(const Credit&, const Credit&) = default;
};

/// The page "About".
class AboutView : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(QString version READ version CONSTANT)
    Q_PROPERTY(QString purpose READ purpose CONSTANT)
    Q_PROPERTY(QString licence READ licence CONSTANT)
    Q_PROPERTY(QVariantList credits READ credits CONSTANT)
  public:
    static QString version(); ///< "Version 1.0.0"
    static QString purpose();
    static QString licence();
    /// Of Credit.
    static QVariantList credits();
};

} // namespace tokwatch
