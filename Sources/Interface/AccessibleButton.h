// SPDX-License-Identifier: MIT
#pragma once

namespace orvane {

/// Tells assistive technology of the kit's buttons what the toolkit leaves out: whether they can be pressed
/// now. A button is any control with a function `press()`, which does what a click does; it is called for
/// each action on the button, toggling too. To be called once, before the first window. Main thread.
void installAccessibleButtons();

} // namespace orvane
