#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>
#include <qqmlregistration.h>

namespace tokwatch {

/// One plain fact about what happens to the user's data.
struct PrivacyFact {
    Q_GADGET
    Q_PROPERTY(QString symbol MEMBER symbol)
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(QString sentence MEMBER sentence)
  public:
    QString symbol; ///< of the theme's
    QString title;
    QString sentence;
    friend bool operator==(const PrivacyFact&, const PrivacyFact&) = default;
};

/// The page "Privacy".
class PrivacyView : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(QString promise READ promise CONSTANT)
    Q_PROPERTY(QVariantList facts READ facts CONSTANT)
  public:
    static QString promise();
    /// Of PrivacyFact.
    static QVariantList facts();
};

} // namespace tokwatch
