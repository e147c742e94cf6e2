#pragma once

#include <QObject>
#include <QProperty>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>
#include <qqmlregistration.h>

namespace kivo {
class LoginItem;
}

namespace tokwatch {

class Preferences;
struct ProviderLocations;

/// What is told about one provider.
struct OnboardingStep {
    Q_GADGET
    Q_PROPERTY(QString id MEMBER id)
    Q_PROPERTY(QString name MEMBER name)
    Q_PROPERTY(QString reads MEMBER reads)
    Q_PROPERTY(QString asks MEMBER asks)
    Q_PROPERTY(QString switchText MEMBER switchText)
  public:
    QString id; ///< the provider's raw value
    QString name;
    QString reads;      ///< what is read on this machine, to be said after the name
    QString asks;       ///< who is asked what, with which login; empty when nobody is
    QString switchText; ///< what the switch for that asking is called; empty without one
    friend bool operator==(const OnboardingStep&, const OnboardingStep&) = default;
};

/// The welcome at the first launch: one page with a step for each provider that is found. Until it
/// is finished, the application asks nobody anything. References outlive it. Main thread only.
class OnboardingView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(QVariantList steps READ stepList CONSTANT)
    Q_PROPERTY(QStringList lookedAt READ lookedAt CONSTANT)
    Q_PROPERTY(bool hasStatusArea READ hasStatusArea NOTIFY hasStatusAreaChanged)
    Q_PROPERTY(QVariantMap asked READ asked NOTIFY askedChanged)
    Q_PROPERTY(
        bool startsAtLogin READ startsAtLogin WRITE setStartsAtLogin NOTIFY startsAtLoginChanged)
  public:
    OnboardingView(Preferences& preferences, const ProviderLocations& locations,
                   kivo::LoginItem& loginItem);

    /// An OnboardingStep for each provider that is found, in declaration order.
    const QVariantList& stepList() const { return steps; }
    /// The places where assistants were looked for.
    const QStringList& lookedAt() const { return places; }
    /// Whether the application is to be found there from then on, or as a window.
    bool hasStatusArea() const { return statusArea; }
    void setHasStatusArea(bool has) { statusArea = has; }
    /// Whether a provider, by its raw value, will be asked once the welcome is finished.
    QVariantMap asked() const;
    /// Claude's asking has a setting of its own; another provider's goes with its limits.
    Q_INVOKABLE void setAsked(const QString& provider, bool isAsked);
    bool startsAtLogin() const;
    void setStartsAtLogin(bool starts);

    /// Sets `hasCompletedOnboarding`.
    Q_INVOKABLE void finish();

  signals:
    void hasStatusAreaChanged();
    void askedChanged();
    void startsAtLoginChanged();
    /// The user is through; `hasCompletedOnboarding` is set.
    void finished();
    /// The window is to close, and the welcome to come again at the next launch.
    void closeRequested();

  private:
    Preferences& preferences;
    kivo::LoginItem& loginItem;
    const QVariantList steps;
    const QStringList places;
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(OnboardingView, bool, statusArea, true,
                                         &OnboardingView::hasStatusAreaChanged)
    QPropertyNotifier liveLimitsNotifier;
    QPropertyNotifier disabledNotifier;
};

} // namespace tokwatch
