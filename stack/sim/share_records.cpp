// The provider's side of the content-sharing records.
#include "velar_sim.h"

VELAR_SIM_CLASS(StartIshSession);
VELAR_SIM_CLASS(StartVshSession);
VELAR_SIM_CLASS(CshResultData);
VELAR_SIM_CLASS(IshIncomingData);
VELAR_SIM_CLASS(IshProgressData);
VELAR_SIM_CLASS(VshIncomingData);
