// Scale.h: what the resource editor costs on a large catalogue.
#ifndef ORVO_BENCH_RESOURCES_SCALE_H
#define ORVO_BENCH_RESOURCES_SCALE_H

namespace orvo::bench {

/// Measures on a catalogue of so many resources in a store of its own, and prints. False if a
/// budget is missed. Makes the application.
bool measureScale(int rows);

} // namespace orvo::bench

#endif
