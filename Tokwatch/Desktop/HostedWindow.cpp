#include "HostedWindow.h"

#include "SystemLog.h"

#include <QGuiApplication>
#include <QQmlContext>
#include <QQmlError>
#include <QQmlProperty>
#include <QQuickItem>
#include <QQuickView>
#include <QVariant>

namespace tokwatch {
namespace {

/// The layout of right-to-left desktops, for everything in the window.
void mirror(QQuickView& window) {
    QQuickItem* all = window.contentItem();
    QQmlContext* context = qmlContext(window.rootObject());
    QQmlProperty::write(all, QStringLiteral("LayoutMirroring.enabled"), true, context);
    QQmlProperty::write(all, QStringLiteral("LayoutMirroring.childrenInherit"), true, context);
}

} // namespace

HostedWindow::HostedWindow(QmlRuntime& qml, Scheduler& timers, Content what)
    : runtime(qml), scheduler(timers), content(std::move(what)) {}

HostedWindow::~HostedWindow() {
    release();
}

QQuickView& HostedWindow::window() {
    releaseCall.reset();
    if (!quickView) make();
    return *quickView;
}

void HostedWindow::make() {
    engine = runtime.engine();
    viewObject = content.makeView();
    quickView = std::make_unique<QQuickView>(engine.get(), nullptr);
    quickView->setResizeMode(QQuickView::SizeRootObjectToView);
    quickView->setColor(runtime.theme().colors().canvas);
    connect(&runtime.theme(), &kivo::Theme::changed, quickView.get(),
            [this] { quickView->setColor(runtime.theme().colors().canvas); });
    quickView->setInitialProperties({{"view", QVariant::fromValue(viewObject.get())}});
    quickView->setSource(content.source);
    for (const QQmlError& error : quickView->errors())
        systemLog("showing a window failed: " + error.toString().toStdString());
    if (QGuiApplication::isRightToLeft() && quickView->rootObject() != nullptr) mirror(*quickView);
    emit made();
}

void HostedWindow::letGo() {
    if (quickView) releaseCall = scheduler.after(keepTime, [this] { release(); });
}

void HostedWindow::release() {
    releaseCall.reset();
    if (!quickView) return;
    emit released();
    quickView.reset();
    viewObject.reset();
    engine.reset();
    runtime.trim();
}

} // namespace tokwatch
