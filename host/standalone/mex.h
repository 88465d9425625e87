// The part of MATLAB's external interface that the gateway uses, as MATLAB documents it: release R2017b, with
// large arrays and separate complex storage. For programs that run without MATLAB, and for a module that is
// built where there is none.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

using mxArray = struct mxArray_tag;
using mwSize = std::size_t;
using mwIndex = std::size_t;
using mxChar = char16_t;
using mxLogical = bool;

enum mxComplexity { mxREAL, mxCOMPLEX };

enum mxClassID {
    mxUNKNOWN_CLASS,
    mxCELL_CLASS,
    mxSTRUCT_CLASS,
    mxLOGICAL_CLASS,
    mxCHAR_CLASS,
    mxVOID_CLASS,
    mxDOUBLE_CLASS,
    mxSINGLE_CLASS,
    mxINT8_CLASS,
    mxUINT8_CLASS,
    mxINT16_CLASS,
    mxUINT16_CLASS,
    mxINT32_CLASS,
    mxUINT32_CLASS,
    mxINT64_CLASS,
    mxUINT64_CLASS,
    mxFUNCTION_CLASS,
    mxOPAQUE_CLASS,
    mxOBJECT_CLASS
};

// The entry point that the gateway defines.
void mexFunction (int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]);

// Memory
void* mxCalloc (std::size_t count, std::size_t size);
void mxFree (void* memory);

// Creation
mxArray* mxCreateDoubleMatrix (mwSize rows, mwSize columns, mxComplexity complexity);
mxArray* mxCreateDoubleScalar (double value);
mxArray* mxCreateSparse (mwSize rows, mwSize columns, mwSize nzmax, mxComplexity complexity);
mxArray* mxCreateString (const char* text);
mxArray* mxCreateCharArray (mwSize dimensions, const mwSize* sizes);
mxArray* mxCreateStructArray (mwSize dimensions, const mwSize* sizes, int fields, const char** names);
mxArray* mxCreateCellArray (mwSize dimensions, const mwSize* sizes);
mxArray* mxDuplicateArray (const mxArray* array);
void mxDestroyArray (mxArray* array);

// Shape and class
std::size_t mxGetM (const mxArray* array);
std::size_t mxGetN (const mxArray* array);
std::size_t mxGetNumberOfElements (const mxArray* array);
mwSize mxGetNumberOfDimensions (const mxArray* array);
mxClassID mxGetClassID (const mxArray* array);
bool mxIsEmpty (const mxArray* array);
bool mxIsChar (const mxArray* array);
bool mxIsStruct (const mxArray* array);
bool mxIsCell (const mxArray* array);
bool mxIsDouble (const mxArray* array);
bool mxIsSparse (const mxArray* array);
bool mxIsComplex (const mxArray* array);

// Contents
double* mxGetPr (const mxArray* array);
void* mxGetData (const mxArray* array);
mwIndex* mxGetIr (const mxArray* array);
mwIndex* mxGetJc (const mxArray* array);
double mxGetScalar (const mxArray* array);
int mxGetString (const mxArray* array, char* text, mwSize size);
mxArray* mxGetCell (const mxArray* array, mwIndex index);
void mxSetCell (mxArray* array, mwIndex index, mxArray* value);
int mxGetNumberOfFields (const mxArray* array);
const char* mxGetFieldNameByNumber (const mxArray* array, int number);
mxArray* mxGetField (const mxArray* array, mwIndex index, const char* name);
mxArray* mxGetFieldByNumber (const mxArray* array, mwIndex index, int number);
void mxSetField (mxArray* array, mwIndex index, const char* name, mxArray* value);
void mxSetFieldByNumber (mxArray* array, mwIndex index, int number, mxArray* value);
int mxAddField (mxArray* array, const char* name);

// Numbers
double mxGetInf ();

// The session
int mexPrintf (const char* format, ...) __attribute__ ((format (printf, 1, 2)));
int mexEvalString (const char* command);
void mexErrMsgTxt (const char* message);
void mexLock ();
}
