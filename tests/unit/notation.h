// Arrays of the host as texts, much as a user types them:
//
//   5   nan   -inf   [1 2; 3 4]   'text'   ['ab'; 'cd']   {1, 'x'}   (a=[1 2], name='x', unset)
//   2x0   4x1x2        zeros of that size            cell 1x3   record 1x2   record 1x2 name
//   int8 [1 2]         also single, int32, uint64, logical, char
//   sparse [0; 5]      sparse logical [0; 1]         complex [1 2]    @    object    string: "text" of MATLAB
#pragma once

#include <string>
#include <string_view>

#include "host/standalone/standalone.h"

standalone::Value value (std::string_view text);
std::vector<standalone::Value> values (const std::vector<std::string>& texts);

// The same for what comes back; "-" where nothing is. A sparse matrix shows what it stores, in its order:
// "sparse 3x2 (2,1)=5". With names: these fields of a record alone, "a=1, b=2".
std::string show (standalone::View view);
std::string show (standalone::View record, std::string_view names);
