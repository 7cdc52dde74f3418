#include "adapters/x11/OwnWindows.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

namespace tavrine {

quint32 ownWindows() {
    const auto *x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return x11 && x11->connection() ? xcb_get_setup(x11->connection())->resource_id_base : 0U;
}

} // namespace tavrine
