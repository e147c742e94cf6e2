#include "KivoLooks/DesktopAppearance.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace kivo {
namespace {

constexpr auto service = "org.freedesktop.portal.Desktop";
constexpr auto portalPath = "/org/freedesktop/portal/desktop";
constexpr auto interface = "org.freedesktop.portal.Settings";
constexpr auto appearanceGroup = "org.freedesktop.appearance";
constexpr auto interfaceGroup = "org.gnome.desktop.interface";

constexpr auto xfceService = "org.xfce.Xfconf";
constexpr auto xfcePath = "/org/xfce/Xfconf";
constexpr auto xfceChannel = "xsettings";
constexpr auto xfceThemeName = "/Net/ThemeName";

/// The portal wraps values in one variant or, in its older method, in two.
QVariant unwrapped(QVariant value) {
    while (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

DesktopAppearance::DesktopAppearance(QDBusConnection bus, QObject* parent) : QObject(parent) {
    // A slot with a type that Qt does not know by its name yet is connected without complaint, and
    // never called: changes would go unheard.
    qRegisterMetaType<QDBusVariant>();
    decideTone();
    qGuiApp->installEventFilter(this);
    if (!bus.isConnected()) return;
    bus.connect(service, portalPath, interface, "SettingChanged", this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    read(bus, appearanceGroup, "color-scheme");
    read(bus, appearanceGroup, "contrast");
    read(bus, interfaceGroup, "enable-animations");
    readThemeName(bus);
}

void DesktopAppearance::read(QDBusConnection bus, const QString& group, const QString& key) {
    QDBusMessage call = QDBusMessage::createMethodCall(service, portalPath, interface, "Read");
    call << group << key;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, group, key, watcher] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        // No portal, or one without this setting: the palette decides.
        if (reply.isValid()) setPortalSetting(group, key, reply.value().variant());
        watcher->deleteLater();
    });
}

void DesktopAppearance::readThemeName(QDBusConnection bus) {
    bus.connect(xfceService, xfcePath, xfceService, "PropertyChanged", this,
                SLOT(xfceSettingChanged(QString, QString, QDBusVariant)));
    QDBusMessage call =
        QDBusMessage::createMethodCall(xfceService, xfcePath, xfceService, "GetProperty");
    call << QString(xfceChannel) << QString(xfceThemeName);
    call.setAutoStartService(false); // on other desktops it may be installed and means nothing
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (reply.isValid()) setThemeName(reply.value().variant().toString());
        watcher->deleteLater();
    });
}

void DesktopAppearance::xfceSettingChanged(const QString& channel, const QString& property,
                                           const QDBusVariant& value) {
    if (channel == QLatin1String(xfceChannel) && property == QLatin1String(xfceThemeName))
        setThemeName(value.variant().toString());
}

void DesktopAppearance::setThemeName(const QString& name) {
    themeDark = name.contains(QLatin1String("dark"), Qt::CaseInsensitive);
    decideTone();
}

void DesktopAppearance::settingChanged(const QString& group, const QString& key,
                                       const QDBusVariant& value) {
    setPortalSetting(group, key, value.variant());
}

void DesktopAppearance::setPortalSetting(const QString& group, const QString& key,
                                         const QVariant& wrapped) {
    const QVariant value = unwrapped(wrapped);
    Appearance next = appearance;
    if (group == appearanceGroup && key == "color-scheme") {
        // 0 no preference, 1 dark, 2 light.
        const uint scheme = value.toUInt();
        portalDark = scheme == 1 || scheme == 2 ? std::optional(scheme == 1) : std::nullopt;
        return decideTone();
    } else if (group == appearanceGroup && key == "contrast") {
        next.highContrast = value.toUInt() == 1;
    } else if (group == interfaceGroup && key == "enable-animations") {
        next.reducedMotion = !value.toBool();
    }
    assign(next);
}

bool DesktopAppearance::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qGuiApp && event->type() == QEvent::ApplicationPaletteChange) decideTone();
    return false;
}

void DesktopAppearance::decideTone() {
    const QPalette palette = QGuiApplication::palette();
    const bool isPaletteDark = palette.color(QPalette::Window).lightness() <
                               palette.color(QPalette::WindowText).lightness();
    Appearance next = appearance;
    next.dark = portalDark.value_or(themeDark.value_or(isPaletteDark));
    assign(next);
}

void DesktopAppearance::assign(const Appearance& next) {
    if (next == appearance) return;
    appearance = next;
    emit changed();
}

} // namespace kivo

#include "moc_DesktopAppearance.cpp"
