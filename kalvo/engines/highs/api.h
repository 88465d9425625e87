// The functions of the HiGHS library, found at run time in a copy of our own.
#pragma once

#include <interfaces/highs_c_api.h>

#include <string>

namespace klv::highs {

// One pointer for each function that is used, under its name without prefix.
// NOLINTBEGIN(readability-identifier-naming)
struct Api {
    decltype (&Highs_create) create;
    decltype (&Highs_destroy) destroy;
    decltype (&Highs_version) version;
    decltype (&Highs_passModel) passModel;
    decltype (&Highs_run) run;
    decltype (&Highs_clearSolver) clearSolver;
    decltype (&Highs_resetOptions) resetOptions;
    decltype (&Highs_zeroAllClocks) zeroAllClocks;
    decltype (&Highs_clear) clear;
    decltype (&Highs_setBoolOptionValue) setBoolOptionValue;
    decltype (&Highs_setIntOptionValue) setIntOptionValue;
    decltype (&Highs_setDoubleOptionValue) setDoubleOptionValue;
    decltype (&Highs_setStringOptionValue) setStringOptionValue;
    decltype (&Highs_setCallback) setCallback;
    decltype (&Highs_startCallback) startCallback;
    decltype (&Highs_getModelStatus) getModelStatus;
    decltype (&Highs_getIntInfoValue) getIntInfoValue;
    decltype (&Highs_getInt64InfoValue) getInt64InfoValue;
    decltype (&Highs_getDoubleInfoValue) getDoubleInfoValue;
    decltype (&Highs_getSolution) getSolution;
    decltype (&Highs_setSolution) setSolution;
    decltype (&Highs_setSparseSolution) setSparseSolution;
    decltype (&Highs_getBasis) getBasis;
    decltype (&Highs_setBasis) setBasis;
    decltype (&Highs_getDualRay) getDualRay;
    decltype (&Highs_getPrimalRay) getPrimalRay;
};
// NOLINTEND(readability-identifier-naming)

// Loads the library, once and for good. What went wrong, or an empty text; after a failure the next call tries again.
std::string load_api ();

// The loaded functions; only after load_api succeeded.
const Api& api ();

}
