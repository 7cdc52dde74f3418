#pragma once

class QWidget;

namespace tavrine::look {

/// To be called just before words, symbol or colour of a widget become others: they are faded into. Nothing for a
/// widget that nobody sees, and where nothing may move. Main thread.
void changeSoftly(QWidget &widget);

} // namespace tavrine::look
