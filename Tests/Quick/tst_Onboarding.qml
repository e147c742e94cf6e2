import QtQuick
import QtTest
import Tokwatch.Onboarding

Item {
    width: 500
    height: 400

    OnboardingContent {
        anchors.fill: parent
        view: welcomeView
    }
    SignalSpy { id: ends; target: welcomeView; signalName: "finished" }
    SignalSpy { id: closings; target: welcomeView; signalName: "closeRequested" }

    Look {
        name: "Onboarding"

        function test_returnEndsItWhereverTheFocusIsAndEscapeOnlyCloses() {
            for (const place of ["Live limits", "Start at login", "Start Using Tokwatch"])
                type([Qt.Key_Escape, Qt.Key_Return], named(place))
            compare([ends.count, closings.count], [3, 3])
        }

    }
}
