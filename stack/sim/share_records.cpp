// The provider's side of the content-sharing records.
#include "velar_sim.h"

VELAR_SIM_CLASS(StartIshSession);
VELAR_SIM_CLASS(StartVshSession);
VELAR_SIM_CLASS(CshResultData);
VELAR_SIM_CLASS(IshIncomingData);
VELAR_SIM_CLASS(IshProgressData);
VELAR_SIM_CLASS(VshIncomingData);

// Image and video share requests are answered with the sharing result record.
VELAR_SIM_AUTO(1001, "CshResultData");
VELAR_SIM_AUTO(1002, "CshResultData");
VELAR_SIM_AUTO(1003, "CshResultData");
VELAR_SIM_AUTO(1101, "CshResultData");
VELAR_SIM_AUTO(1102, "CshResultData");
VELAR_SIM_AUTO(1103, "CshResultData");

// The class each notification id of this family comes up with.
VELAR_SIM_NOTIFY(16001, "IshIncomingData");
VELAR_SIM_NOTIFY(16002, "CshResultData");
VELAR_SIM_NOTIFY(16003, "CshResultData");
VELAR_SIM_NOTIFY(16004, "IshProgressData");
VELAR_SIM_NOTIFY(17001, "VshIncomingData");
VELAR_SIM_NOTIFY(17002, "CshResultData");
VELAR_SIM_NOTIFY(17003, "CshResultData");
