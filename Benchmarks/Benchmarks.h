#pragma once

#include "Benchmarks/Measurement.h"

namespace orvia::bench {

/// Reading and writing a page of the inbox and the frames of the live channel.
std::vector<Measurement> codingMeasurements();

/// The state object without a window: live events and the derived list.
std::vector<Measurement> sessionMeasurements();

/// Keys, scrolling and opening in a long thread, in a real window. Needs a QApplication.
std::vector<Measurement> viewMeasurements();

/// The longest gaps of the event loop, in a real window on a real service. Needs a QApplication.
std::vector<Measurement> stallMeasurements();

/// The real program on a virtual display: start, memory, idling, the cost of events.
std::vector<Measurement> programMeasurements();

} // namespace orvia::bench
