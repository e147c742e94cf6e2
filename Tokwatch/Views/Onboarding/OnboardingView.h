#pragma once

#include "Tokwatch/Display/ObservingUpdater.h"
#include "Tokwatch/Views/Onboarding/OnboardingSteps.h"

#include <QObject>
#include <QProperty>
#include <QVariantList>
#include <QVariantMap>
#include <qqmlregistration.h>

#include <vector>

namespace kivo {
class LoginItem;
}

namespace tokwatch {

class Preferences;

/// The welcome at the first launch: one page with a step for each provider that is found. Until it
/// is finished, the application asks nobody anything. References outlive it. Main thread only.
class OnboardingView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString purpose READ purpose CONSTANT)
    Q_PROPERTY(QVariantList steps READ stepList CONSTANT)
    Q_PROPERTY(QString promise READ promise CONSTANT)
    Q_PROPERTY(QString place READ place NOTIFY placeChanged)
    Q_PROPERTY(QString sign READ sign NOTIFY signChanged)
    Q_PROPERTY(QString finishText READ finishText CONSTANT)
    Q_PROPERTY(QVariantMap asked READ asked NOTIFY askedChanged)
    Q_PROPERTY(
        bool startsAtLogin READ startsAtLogin WRITE setStartsAtLogin NOTIFY startsAtLoginChanged)
  public:
    OnboardingView(Preferences& preferences, const ProviderLocations& locations,
                   kivo::LoginItem& loginItem);

    static QString title(); ///< of the window, too
    static QString purpose();
    QVariantList stepList() const;
    static QString promise();
    /// Where the application is to be found from then on.
    const QString& place() const { return placeText.value(); }
    void setHasStatusArea(bool has);
    /// Whose mark the status item bears: a provider's raw value, empty for the application's own.
    const QString& sign() const { return itemSign.value(); }
    static QString finishText();
    /// Whether a provider, by its raw value, will be asked once the welcome is finished.
    QVariantMap asked() const;
    /// Claude's asking has a setting of its own; another provider's goes with its limits.
    Q_INVOKABLE void setAsked(const QString& provider, bool isAsked);
    bool startsAtLogin() const;
    void setStartsAtLogin(bool starts);

    /// Sets `hasCompletedOnboarding`.
    Q_INVOKABLE void finish();

  signals:
    void placeChanged();
    void signChanged();
    void askedChanged();
    void startsAtLoginChanged();
    /// The user is through; `hasCompletedOnboarding` is set.
    void finished();
    /// The window is to close, and the welcome to come again at the next launch.
    void closeRequested();

  private:
    Preferences& preferences;
    kivo::LoginItem& loginItem;
    const std::vector<OnboardingStep> steps;
    Q_OBJECT_BINDABLE_PROPERTY(OnboardingView, QString, placeText, &OnboardingView::placeChanged)
    Q_OBJECT_BINDABLE_PROPERTY(OnboardingView, QString, itemSign, &OnboardingView::signChanged)
    QPropertyNotifier liveLimitsNotifier;
    QPropertyNotifier disabledNotifier;
    ObservingUpdater<QString> signUpdater;
};

} // namespace tokwatch
