#pragma once
// Every page of the Add Setup wizard, in the order they come.
#include "setups/wizard/AddSetupF4Frm1.h"
#include "setups/wizard/AddSetupF4Frm3.h"
#include "setups/wizard/AddSetupF4Frm4.h"
#include "setups/wizard/AddSetupF4Frm5.h"
#include "setups/wizard/AddSetupFileFrm1.h"
#include "setups/wizard/AddSetupFrm1.h"
