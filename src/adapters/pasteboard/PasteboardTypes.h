#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace tavrine {

/// The table between the desktop's targets and the names of the port.

/// The port's name of a target; targets that have none there keep their own.
[[nodiscard]] QString pasteboardTypeOf(const QByteArray &target);

/// The port's names of the contents among `targets`, in their order, each once.
[[nodiscard]] QStringList pasteboardTypesOf(const QList<QByteArray> &targets);

/// True for targets that are questions or commands to the owner, or that name things of the server which end with the
/// owner. They are no contents, and are neither shown nor kept.
[[nodiscard]] bool isProtocolTarget(const QByteArray &target);

/// True for targets by which an owner says that its contents are not for a history. That such a target is there is
/// enough: programs disagree on what it holds.
[[nodiscard]] bool isConcealedTarget(const QByteArray &target);

/// Targets to read the plain text from, the best first: those that can hold every character come before the others.
[[nodiscard]] const QList<QByteArray> &textTargets();

/// Targets to read a picture from, the best first: without loss before with loss.
[[nodiscard]] const QList<QByteArray> &imageTargets();

/// Targets that name files.
[[nodiscard]] const QList<QByteArray> &fileTargets();

} // namespace tavrine
