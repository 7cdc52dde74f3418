#include "look/ApplicationIcon.h"

namespace tavrine::look {

QIcon applicationIcon() {
    QIcon icon;
    for (const int side : {48, 128})
        icon.addFile(QStringLiteral(":/tavrine/icon/%1.png").arg(side), {side, side});
    return icon;
}

} // namespace tavrine::look
