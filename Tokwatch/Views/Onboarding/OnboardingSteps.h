#pragma once

#include "ProviderLocations.h"

#include <QObject>
#include <QString>
#include <QVariantList>

#include <vector>

namespace tokwatch {

/// One thing that a step tells.
struct OnboardingFact {
    Q_GADGET
    Q_PROPERTY(QString symbol MEMBER symbol)
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(QString sentence MEMBER sentence)
    Q_PROPERTY(bool isLiveLimits MEMBER isLiveLimits)
  public:
    QString symbol; ///< of the theme's
    QString title;
    QString sentence;
    bool isLiveLimits = false; ///< what the switch for live limits stands beside
    friend bool operator==(const OnboardingFact&, const OnboardingFact&) = default;
};

/// What is told about one provider.
struct OnboardingStep {
    Q_GADGET
    Q_PROPERTY(QString id MEMBER id)
    Q_PROPERTY(QString name MEMBER name)
    Q_PROPERTY(QString subtitle MEMBER subtitle)
    Q_PROPERTY(QVariantList facts MEMBER facts)
    Q_PROPERTY(bool isNone READ isNone)
  public:
    bool isNone() const { return id.isEmpty(); }

    QString id; ///< the provider's raw value; empty for the step without one
    QString name;
    QString subtitle;
    QVariantList facts; ///< of OnboardingFact
    friend bool operator==(const OnboardingStep&, const OnboardingStep&) = default;
};

/// One step for each provider that is found, in declaration order; when there is none, one that
/// says where they are looked for.
std::vector<OnboardingStep> onboardingSteps(const ProviderLocations& locations);

} // namespace tokwatch
