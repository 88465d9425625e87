#include "common/arrays.h"
#include "common/refuse.h"
#include "host/holders.h"
#include "input/initial_solution.h"

namespace {

// A number is a key if the library has a text for it.
KLVrescode_t read_number (KLVtask_t task, double number, int& key)
{
    const auto fitting = truncate_to_int32 (number);
    if (!fitting)
        return KLV_RES_ARGUMENT;
    key = *fitting;
    char text[KLV_MAX_TEXT];
    return KLV_sktostr (task, key, text) == KLV_RES_OK ? KLV_RES_OK : KLV_RES_ARGUMENT;
}

KLVrescode_t read_text (KLVtask_t task, mxChar first, mxChar second, int& key)
{
    const char text[] = {static_cast<char> (first & 0xff), static_cast<char> (second & 0xff), '\0'};
    const KLVrescode_t code = KLV_strtosk (task, text, &key);
    return code == KLV_RES_STATUS_KEY_UNKNOWN ? KLV_RES_ARGUMENT : code;
}

}

KLVrescode_t translatestatuskeys (KLVtask_t task, int count, const mxArray* array, const char* field,
                                  const char* solution, int* keys)
{
    if (!is_given (array)) {
        std::fill_n (keys, count, KLV_SK_UNKNOWN);
        return KLV_RES_OK;
    }
    const auto items = static_cast<std::uint64_t> (count);
    KLVrescode_t code = KLV_RES_OK;
    const auto read_all = [&] (auto read_item) {
        for (int i = 0; i < count && code == KLV_RES_OK; ++i) {
            code = read_item (i);
            if (code == KLV_RES_ARGUMENT)
                refuse (code, "prob.sol.%s.%s(%d)", solution, field, i + 1);
        }
    };

    if (isvector (array, items, 0)) {
        const double* numbers = mxGetPr (array);
        if (numbers == nullptr)
            return KLV_RES_OUT_OF_MEMORY;
        read_all ([&] (int i) { return read_number (task, numbers[i], keys[i]); });
    } else if (mxIsChar (array) && mxGetM (array) == items && mxGetN (array) == 2) {
        const auto* characters = static_cast<const mxChar*> (mxGetData (array));
        if (characters == nullptr)
            return KLV_RES_OUT_OF_MEMORY;
        read_all ([&] (int i) {
            return read_text (task, characters[i], characters[i + std::ptrdiff_t (count)], keys[i]);
        });
    } else
        code = refuse (KLV_RES_ARGUMENT, "prob.sol.%s.%s", solution, field);
    return code;
}
