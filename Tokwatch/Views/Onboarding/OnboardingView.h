#pragma once

#include "OnboardingSteps.h"

#include <QObject>
#include <QProperty>
#include <QVariant>
#include <qqmlregistration.h>

#include <vector>

namespace tokwatch {

class Preferences;

/// The welcome at the first launch: a step for each provider that is found. References outlive it.
/// Main thread only.
class OnboardingView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString purpose READ purpose CONSTANT)
    Q_PROPERTY(int count READ count CONSTANT)
    Q_PROPERTY(int current READ current NOTIFY currentChanged)
    Q_PROPERTY(tokwatch::OnboardingStep step READ step NOTIFY currentChanged)
    Q_PROPERTY(QString progress READ progress NOTIFY currentChanged)
    Q_PROPERTY(QString nextText READ nextText NOTIFY currentChanged)
    Q_PROPERTY(bool isFirst READ isFirst NOTIFY currentChanged)
    Q_PROPERTY(bool isLast READ isLast NOTIFY currentChanged)
    Q_PROPERTY(bool liveLimits READ liveLimits WRITE setLiveLimits NOTIFY liveLimitsChanged)
  public:
    OnboardingView(Preferences& preferences, const ProviderLocations& locations);

    static QString title(); ///< of the window, too
    static QString purpose();
    int count() const { return static_cast<int>(steps.size()); }
    int current() const { return place; }
    const OnboardingStep& step() const { return steps[static_cast<std::size_t>(place)]; }
    QString progress() const; ///< "Step 1 of 3"
    QString nextText() const;
    bool isFirst() const { return place == 0; }
    bool isLast() const { return place == count() - 1; }
    bool liveLimits() const;
    void setLiveLimits(bool isOn);

    /// The step after this one; after the last, the end.
    Q_INVOKABLE void next();
    Q_INVOKABLE void back();
    /// Leaves out the steps that remain.
    Q_INVOKABLE void skip();

  signals:
    void currentChanged();
    void liveLimitsChanged();
    /// The user is through; `hasCompletedOnboarding` is set.
    void finished();
    /// The window is to close, and the welcome to come again at the next launch.
    void closeRequested();

  private:
    void go(int step);

    Preferences& preferences;
    const std::vector<OnboardingStep> steps;
    int place = 0;
    QPropertyNotifier liveLimitsNotifier;
};

} // namespace tokwatch
