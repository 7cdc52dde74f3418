#include "shell/PermissionChecker.h"

#include "base/Time.h"
#include "ports/Access.h"

namespace tavrine {

PermissionChecker::PermissionChecker(Access &access, Time &time, QObject *parent)
    : QObject(parent), m_access(access), m_time(time) {
    refresh();
    m_timer = time.repeat(pollInterval, [this] { refresh(); });
}

PermissionChecker::~PermissionChecker() = default;

void PermissionChecker::refresh() {
    m_time.async(this, [this] { read(); });
}

void PermissionChecker::read() {
    const bool isTrusted = m_access.isAccessibilityTrusted();
    const bool isCaptureGranted = m_access.isScreenCaptureGranted();
    if (isTrusted != m_accessibilityGranted) {
        m_accessibilityGranted = isTrusted;
        Q_EMIT accessibilityGrantedChanged();
    }
    if (isCaptureGranted != m_screenRecordingGranted) {
        m_screenRecordingGranted = isCaptureGranted;
        Q_EMIT screenRecordingGrantedChanged();
    }
}

void PermissionChecker::requestAccessibility() {
    m_access.requestAccessibility();
    m_time.asyncAfter(delayAfterRequest, this, [this] { refresh(); });
}

void PermissionChecker::requestScreenRecording() {
    m_access.requestScreenCapture();
    m_time.asyncAfter(delayAfterRequest, this, [this] { refresh(); });
}

} // namespace tavrine
