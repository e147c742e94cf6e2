#include "KivoMenuBar/PanelTone.h"

#include "KivoMenuBar/BarStyleSheet.h"
#include "KivoMenuBar/PlasmaColours.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace kivo {
namespace {

constexpr auto settingsService = "org.xfce.Xfconf";
constexpr auto settingsPath = "/org/xfce/Xfconf";
constexpr auto panelChannel = "xfce4-panel";
constexpr auto darkMode = "/panels/dark-mode";
constexpr auto desktopChannel = "xsettings";
constexpr auto themeName = "/Net/ThemeName";
// Text lighter than this stands on a dark panel.
constexpr int middleGray = 128;

} // namespace

PanelTone::PanelTone(QDBusConnection connection, const StatusAreaHost& areaHost, QObject* parent,
                     TextColour colourOf)
    : QObject(parent), bus(std::move(connection)), host(areaHost), textColour(std::move(colourOf)) {
    connect(&host, &StatusAreaHost::changed, this, &PanelTone::hostChanged);
    for (const auto changed :
         {&QFileSystemWatcher::fileChanged, &QFileSystemWatcher::directoryChanged})
        connect(&plasmaFiles, changed, this, &PanelTone::readPlasma);
    hostChanged();
}

std::optional<QColor> PanelTone::systemTextColour(uint process) {
    return barTextColour(barStyleSheet(process));
}

void PanelTone::setDesktopDark(bool isDark) {
    desktopDark = isDark;
    update();
}

void PanelTone::hostChanged() {
    const ToneSource source = host.area().tone;
    if (source == ToneSource::xfce && !followsSettings) {
        followsSettings =
            bus.connect(settingsService, settingsPath, settingsService, "PropertyChanged", this,
                        SLOT(settingChanged(QString, QString, QDBusVariant)));
        readSetting(panelChannel, darkMode);
        readSetting(desktopChannel, themeName);
    }
    if (source == ToneSource::plasma) return readPlasma();
    sheetDark.reset();
    if (source == ToneSource::styleSheet)
        if (const std::optional<QColor> text = textColour(host.process()))
            sheetDark = qGray(text->rgb()) >= middleGray;
    update();
}

void PanelTone::readPlasma() {
    if (host.area().tone != ToneSource::plasma) return;
    plasmaDark = isPlasmaPanelDark();
    // A file that is replaced, as these are, is a new one to be watched.
    const QStringList paths = plasmaSettingsPaths();
    if (!paths.isEmpty()) plasmaFiles.addPaths(paths);
    update();
}

void PanelTone::readSetting(const char* channel, const char* property) {
    QDBusMessage call = QDBusMessage::createMethodCall(settingsService, settingsPath,
                                                       settingsService, "GetProperty");
    call << QString::fromLatin1(channel) << QString::fromLatin1(property);
    auto* pending = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [=, this] {
        pending->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *pending;
        // A property that was never set is an error: the next source decides.
        if (reply.isValid())
            settingChanged(QString::fromLatin1(channel), QString::fromLatin1(property),
                           reply.value());
    });
}

void PanelTone::settingChanged(const QString& channel, const QString& property,
                               const QDBusVariant& value) {
    if (channel == QLatin1String(panelChannel) && property == QLatin1String(darkMode))
        panelDark = value.variant().toBool();
    else if (channel == QLatin1String(desktopChannel) && property == QLatin1String(themeName))
        gtkThemeDark =
            value.variant().toString().contains(QLatin1String("dark"), Qt::CaseInsensitive);
    else
        return;
    update();
}

void PanelTone::update() {
    bool next = desktopDark;
    bool nextGuess = false;
    switch (host.area().tone) {
    case ToneSource::desktop:
        break;
    case ToneSource::habit:
        next = nextGuess = true;
        break;
    case ToneSource::styleSheet:
        next = sheetDark.value_or(true);
        nextGuess = !sheetDark;
        break;
    case ToneSource::xfce:
        next = panelDark.value_or(false) || gtkThemeDark.value_or(desktopDark);
        break;
    case ToneSource::plasma:
        next = plasmaDark.value_or(desktopDark);
        break;
    }
    if (next == dark && nextGuess == guess) return;
    dark = next;
    guess = nextGuess;
    emit changed();
}

} // namespace kivo

#include "moc_PanelTone.cpp"
