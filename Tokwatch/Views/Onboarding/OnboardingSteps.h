#pragma once

#include "TokwatchCore/Ingestion/ProviderLocations.h"

#include <QObject>
#include <QString>

#include <vector>

namespace tokwatch {

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

/// One step for each provider that is found, in declaration order.
std::vector<OnboardingStep> onboardingSteps(const ProviderLocations& locations);

} // namespace tokwatch
