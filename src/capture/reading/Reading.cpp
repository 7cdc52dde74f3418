#include "capture/reading/Reading.h"

#include "ports/CodeDetector.h"
#include "ports/Recognizer.h"

namespace tavrine {

Reading::Reading(const Ports &ports) : m_ports(ports), m_manager(ports.recognizer, m_recognitionQueue, ports.time) {}

Reading::~Reading() {
    for (CodeDetector *detector : {&m_ports.screenDetector, &m_ports.pictureDetector})
        detector->cancel();
    m_ports.recognizer.cancel();
}

} // namespace tavrine
