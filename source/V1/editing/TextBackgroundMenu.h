#pragma once

class QMenu;

/// Appends the colours that the background of a text may have: "NONE" (transparent) and fourteen others, each with a
/// swatch. The data of an item is its QColor. Menus have small icons; this one gets the swatches' width for its own.
void fillTextBackgroundMenu(QMenu &menu);
