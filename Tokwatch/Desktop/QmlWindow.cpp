#include "Tokwatch/Desktop/QmlWindow.h"

#include "Platform/Linux/ProcessMemory.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QGuiApplication>
#include <QQmlContext>
#include <QQmlError>
#include <QQmlProperty>
#include <QQuickItem>
#include <QQuickView>
#include <QVariant>

namespace tokwatch {
QmlWindow::QmlWindow(QmlRuntime& qml, Scheduler& timers, Content what)
    : runtime(qml), scheduler(timers), content(std::move(what)) {}

QmlWindow::~QmlWindow() {
    release();
}

QQuickView& QmlWindow::window() {
    releaseCall.reset();
    if (!quickView) make();
    return *quickView;
}

void QmlWindow::make() {
    engine = runtime.engine();
    viewObject = content.makeView();
    quickView = std::make_unique<QQuickView>(engine.get(), nullptr);
    quickView->setResizeMode(QQuickView::SizeRootObjectToView);
    translucent = false;
    paintBackground();
    connect(&runtime.theme(), &kivo::Theme::changed, quickView.get(),
            [this] { paintBackground(); });
    quickView->setInitialProperties({{"view", QVariant::fromValue(viewObject.get())}});
    quickView->setSource(content.source);
    for (const QQmlError& error : quickView->errors())
        systemLog("showing a window failed: " + error.toString().toStdString());
    followLayoutDirection(*quickView);
    emit made();
}

void QmlWindow::setTranslucent(bool isTranslucent) {
    translucent = isTranslucent;
    paintBackground();
}

void QmlWindow::paintBackground() {
    quickView->setColor(translucent ? QColor(Qt::transparent) : runtime.theme().colors().canvas);
}

void QmlWindow::followLayoutDirection(QQuickView& view) {
    if (!QGuiApplication::isRightToLeft() || view.rootObject() == nullptr) return;
    QQuickItem* all = view.contentItem();
    QQmlContext* context = qmlContext(view.rootObject());
    QQmlProperty::write(all, QStringLiteral("LayoutMirroring.enabled"), true, context);
    QQmlProperty::write(all, QStringLiteral("LayoutMirroring.childrenInherit"), true, context);
}

void QmlWindow::keepReady() {
    isKeptReady = true;
    readyCall = scheduler.after(readyAfter, [this] {
        if (!quickView) make();
    });
}

void QmlWindow::letGo() {
    if (!quickView) return;
    releaseCall = scheduler.after(keepTime, [this] {
        release();
        if (isKeptReady) make();
        giveBackMemory();
    });
}

void QmlWindow::release() {
    releaseCall.reset();
    if (!quickView) return;
    emit released();
    quickView.reset();
    viewObject.reset();
    engine.reset();
}

} // namespace tokwatch

#include "moc_QmlWindow.cpp"
