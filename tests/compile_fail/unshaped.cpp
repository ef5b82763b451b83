// Compiled, not run: a class that the simulator has no shape for must stop
// the build rather than show as an empty JSON object. UNSHAPED_RECORD leaves
// the registered record without one, UNSHAPED_HELD the object it holds; with
// neither the file compiles.
#include "stack/sim/velar_sim.h"

struct Held {
    int count = 0;
};

class Holder : public ImsData {
public:
    Held held;
    int handle = 0;
};

namespace velar_sim::shape {
#ifndef UNSHAPED_HELD
VELAR_SHAPE_OF(Fields, Held, count)
#endif
#ifndef UNSHAPED_RECORD
VELAR_SHAPE_OF(Fields, Holder, held, handle)
#endif
}  // namespace velar_sim::shape

VELAR_SIM_CLASS(Holder);
