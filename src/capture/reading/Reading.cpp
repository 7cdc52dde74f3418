#include "capture/reading/Reading.h"

#include "ports/CodeDetector.h"
#include "ports/Recognizer.h"

#include <QThread>

#include <algorithm>

namespace tavrine {
namespace {

/// More readers than processors only get into each other's way, and each takes the memory of its page; but even on one
/// processor a picture must not wait for another that takes a minute.
int mostReadersAtOnce() {
    return std::clamp(QThread::idealThreadCount(), 2, 4);
}

} // namespace

Reading::Reading(const Ports &ports)
    : m_ports(ports), m_recognitionQueue(QStringLiteral("com.tavrine.ocr"), mostReadersAtOnce()),
      m_detectionQueue(QStringLiteral("com.tavrine.qr"), mostReadersAtOnce()),
      m_manager(ports.recognizer, m_recognitionQueue, ports.time) {}

Reading::~Reading() {
    for (CodeDetector *detector : {&m_ports.screenDetector, &m_ports.pictureDetector})
        detector->cancel();
    m_ports.recognizer.cancel();
}

} // namespace tavrine
