#pragma once
// Every page of the Add Setup wizard, for the pages that show the next one.
#include "ui/wizard/ChoicePage.h"
#include "ui/wizard/ConfigOptionsPage.h"
#include "ui/wizard/EndPage.h"
#include "ui/wizard/FilesPage.h"
#include "ui/wizard/InstallationPage.h"
#include "ui/wizard/NamePage.h"
#include "ui/wizard/ProgressPage.h"
#include "ui/wizard/SetupFilePage.h"
