#pragma once

#include "ports/PanelWindow.h"

#include <QMargins>

#include <xcb/xcb.h>

class QWindow;

namespace tavrine {

/// Qt's own connection, null without X. Requests about a window of Qt's go over it, so that they keep their order with
/// Qt's own.
[[nodiscard]] xcb_connection_t *qtConnection();
/// The atom of that name, or none when the server does not answer in time.
[[nodiscard]] xcb_atom_t qtAtom(const char *name);
/// Until the server has done all that was asked of it, or for as long as an `XcbClient` waits.
void flushQtConnection();

/// Maps a described panel onto a window that Qt made and that is not on the screen: type, states, desktops. The window
/// manager forgets all of it when a window goes, so this is called before each showing.
///
/// A panel that takes the keyboard is managed, kept above and on all desktops: once it has the keyboard it stands
/// above a full-screen window too, and it gives the keyboard back when it goes. One that takes none by-passes the
/// window manager, which no other way keeps a window above a full-screen one that has the keyboard. This server has
/// no means to hide a window's pixels from other programs, so `sharing` changes nothing here.
///
/// `room` lies round the panel within the window, for a shadow: no part of it counts for the window manager or takes
/// clicks.
void describeToDesktop(QWindow &window, const PanelDescription &description, const QMargins &room);
/// Whether a window was described so, whatever the window manager has heard of it by now.
[[nodiscard]] bool isDescribed(const QWindow &window);
/// Where the window takes clicks: nowhere, or all over the panel.
void shapeInput(QWindow &window, bool ignoresMouseEvents, const QMargins &room);
/// Says the states of a shown panel once more. A window manager clears them when a window goes, and may come to that
/// only after a panel was described for its next showing.
void repeatToWindowManager(QWindow &window, const PanelDescription &description);
/// The person asked for the window at this time of the server, whatever Qt knows of it: Qt hears no hot key.
void setUserTime(QWindow &window, quint32 time);

} // namespace tavrine
