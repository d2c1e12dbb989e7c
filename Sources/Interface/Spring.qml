// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// A value that a spring pulls from 0 to 1. `response` is the period of the undamped spring in seconds,
// `dampingFraction` lies below 1.
NumberAnimation {
    id: root

    property real response: 0.35
    property real dampingFraction: 0.7

    readonly property real frequency: 2 * Math.PI / response
    /// After this long the spring is within a thousandth of its rest.
    readonly property real settled: Math.log(1000) / (dampingFraction * frequency)

    /// Where the spring stands after a share of its time, 0 to 1.
    function valueAt(share) {
        const t = share * settled;
        const damped = frequency * Math.sqrt(1 - dampingFraction * dampingFraction);
        const decay = Math.exp(-dampingFraction * frequency * t);
        return share >= 1 ? 1 : 1 - decay * (Math.cos(damped * t)
            + dampingFraction * frequency / damped * Math.sin(damped * t));
    }

    from: 0
    to: 1
    duration: Theme.reducedMotion ? 0 : settled * 1000
}
