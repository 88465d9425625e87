## Every class of value in every field of the problem record and in every input: the call returns the code that the help
## states, names the input where it refuses it, and leaves the session able to make the next call.

## Values of every class and shape, each with a name.
%!function values = odd_values ()
%!  values = {
%!    "empty", []; "empty row", zeros(1,0); "empty column", zeros(0,1); "empty 3-D", zeros(0,0,3);
%!    "empty text", ""; "empty cell", {}; "empty records", struct([]); "empty int8", zeros(0,3,"int8");
%!    "empty logical", false(0,0); "empty sparse", sparse(0,3); "empty sparse logical", sparse(false(3,0));
%!    "number", 1; "negative", -1; "half", 0.5; "NaN", NaN; "Inf", Inf; "minus Inf", -Inf; "huge", 1e300;
%!    "beyond 32 bits", 2^32+1; "complex number", 1+2i;
%!    "row of 2", [1 1]; "row of 3", [1 1 1]; "column of 2", [1;1]; "column of 3", [1;2;3]; "range", 1:3;
%!    "diagonal", eye(3); "permutation", eye(3)([2 1 3],:); "matrix", magic(3); "3-D", ones(3,1,2);
%!    "complex row", [1 2 3i]; "NaNs", [NaN NaN NaN]; "Infs", [Inf;Inf;Inf]; "minus Infs", [-Inf -Inf -Inf];
%!    "sparse 2", sparse([0;1]); "sparse 3", sparse([0;1;0]); "sparse row", sparse([0 1 0]);
%!    "sparse NaN", sparse([0;NaN;0]); "sparse complex", sparse([0;1i;0]); "sparse matrix", sparse(magic(3));
%!    "sparse logical", sparse([false;true;false]); "sparse logical row", sparse([true false true]);
%!    "logical", true; "logicals", [true;false;true]; "single", single(1); "singles", single([1 2 3]);
%!    "int8", int8(1); "int8s", int8([1;2;3]); "uint8s", uint8([1 2 3]); "int16s", int16([1 2 3]);
%!    "uint16s", uint16([1 2 3]); "int32s", int32([1 2 3]); "uint32s", uint32([1 2 3]); "int64s", int64([1 2 3]);
%!    "uint64s", uint64([1 2 3]); "character", "x"; "text", "abc"; "texts", ["ab";"cd";"ef"];
%!    "text with a zero", char([97 0 98]); "UTF-8", "zé"; "cell", {1}; "cell of 2 texts", {"a","b"};
%!    "cell of 3 texts", {"a";"";"c"}; "cell of 3", {1,{},@sin}; "unset cell", cell(3,1);
%!    "record", struct("x",1); "record without fields", struct(); "records", struct("x",{1,2,3});
%!    "record of records", struct("sub",struct("sub",1),"name",struct());
%!    "handle", @sin; "anonymous function", @(x)x; "map", containers.Map("a",1); "empty map", containers.Map();
%!    "object", inputParser()};
%!endfunction

%!function is = is_none (v)
%!  is = ! isobject (v) && isempty (v);
%!endfunction

## Vectors of length n as the record knows them.
%!function is = is_vector (v, n, with_sparse)
%!  if issparse (v)
%!    is = with_sparse && isequal (size (v), [n 1]);
%!  else
%!    is = isa (v, "double") && (rows (v) == 1 || size (v, 1) == n) && numel (v) == n;
%!  endif
%!endfunction

## The code of a load of a good problem with 2 constraints and 3 variables in which one field has this value.
%!function code = code_of (field, v)
%!  code = 1200 * ! is_none (v);
%!  switch field
%!    case {"a", "cfix"}
%!      shaped = ifelse_ (field == "a", ndims (v) == 2, ! issparse (v) && isscalar (v));
%!      code = 1200;
%!      if isa (v, "double") && shaped && (isreal (v) || field != "a")
%!        code = 3004 * ! all (isfinite (nonzeros (real (v))));
%!      endif
%!    case {"c", "blc", "buc", "blx", "bux"}
%!      if code && ! is_vector (v, 3 - (numel (field) == 3 && field(3) == "c"), true)
%!        code = 1200 + (field(1) == "b");
%!      elseif code
%!        code = ifelse_ (field(1) == "c", 3004 * ! all (isfinite (real (v))), ...
%!                        1400 * any ((1 - 2 * (field(min (2, end)) == "u")) * real (v) >= 1e20));
%!      endif
%!    case {"qosubi", "qosubj", "qcsubk", "qcsubi", "qcsubj"}
%!      code += code > 0;
%!    case {"f", "g", "names.unknown"}
%!      code = 1200;
%!    case {"barc", "bara", "barf", "primalrepair", "objsense", "unknown", "names.cone", "names.acc", "names.barvar"}
%!      code = 0;
%!    case "sol"
%!      code *= ! isstruct (v);
%!    case "ints"
%!      code *= ! (isstruct (v) && numel (v) == 1 && (! isfield (v, "sub") || isstruct (v.sub)));
%!    case "ints.sub"
%!      code *= is_vector (v, numel (v), false) && ! all (fix (real (v)) >= 1 & fix (real (v)) <= 3);
%!    case "names"
%!      code *= isstruct (v) && ! (numel (v) == 1 && isempty (fieldnames (v)));
%!    case {"names.name", "names.obj"}
%!      code = 1200 * ! (ischar (v) && ! any (v(:) == 0));
%!    case {"names.var", "names.con"}
%!      fits = ! isobject (v) && numel (v) == 2 + (field(7) == "v");
%!      code = 1201 - fits;
%!      code *= ! (fits && iscell (v) && all (cellfun (@ischar, v(:))));
%!  endswitch
%!endfunction

%!function chosen = ifelse_ (condition, a, b)
%!  chosen = {b, a}{1 + all (condition)};
%!endfunction

%!function prob = good_problem ()
%!  prob = struct ("a", sparse ([1 1 0; 0 1 1]), "c", [1 2 3], "blc", [1; 1], "blx", [0 0 0]);
%!endfunction

%!function expect (observed, expected, what)
%!  if ! isequal (observed, expected)
%!    error ("%s: %s, expected %s", what, disp (observed), disp (expected));
%!  endif
%!endfunction

## A call with its text, and then a good one.
%!function [r, text] = checked_call (what, varargin)
%!  text = evalc ("r = kalvoopt (varargin{:});");
%!  good_text = evalc ("[good, answer] = kalvoopt ('minimize echo(0)', good_problem ());");
%!  expect (good, 0, what);
%!  assert (abs (answer.sol.bas.pobjval - 2) < 1e-9, what);
%!  expect (good_text, "", what);
%!endfunction

%!function check_field (field)
%!  names = strsplit (field, ".");
%!  for value = odd_values ().'
%!    what = [field " = " value{1}];
%!    prob = ifelse_ (strcmp (field, "a"), struct ("a", 0), good_problem ());
%!    if numel (names) == 1        # setfield cannot set a field to a map
%!      prob.(names{1}) = value{2};
%!    else
%!      prob.(names{1}).(names{2}) = value{2};
%!    endif
%!    [r, text] = checked_call (what, "echo(0)", prob);
%!    expect (r, code_of (field, value{2}), what);
%!    if r == 0 || r == 3004
%!      expect (text, "", what);
%!    else
%!      assert (strncmp (text, "*** Error(", 10) && any (strfind (text, names{end})), [what ": " text]);
%!    endif
%!  endfor
%!endfunction

%!test
%! for field = {"a", "c", "cfix", "blc", "buc", "blx", "bux", "ints", "ints.sub", "objsense", "unknown"}
%!   check_field (field{1});
%! endfor
%!test
%! for field = {"qosubi", "qosubj", "qcsubk", "qcsubi", "qcsubj", "qoval", "qcval", "f", "g", "accs", "cones", ...
%!              "bardim", "barc", "bara", "barf", "prisen", "duasen", "sol", "primalrepair"}
%!   check_field (field{1});
%! endfor
%!test
%! for field = {"names", "names.name", "names.obj", "names.var", "names.con", "names.cone", "names.acc", ...
%!              "names.barvar", "names.unknown"}
%!   check_field (field{1});
%! endfor

%!test
%! for field = {"skc", "skx", "xc", "xx", "y", "slx"}
%!   for value = odd_values ().'
%!     prob = good_problem ();
%!     prob.sol.bas.(field{1}) = value{2};
%!     [r, text] = checked_call ([field{1} " = " value{1}], "minimize echo(0)", prob);
%!     named = strncmp (text, ["*** Error(1200): prob.sol.bas." field{1}], 30 + numel (field{1}));
%!     expect (named + 2 * isempty (text), 1 + (r != 1200), [field{1} " = " value{1}]);
%!   endfor
%! endfor

## The inputs themselves: empty means absent, and a value of a wrong class is refused by name.
%!function check_input (position, may_be_accepted, word)
%!  for value = odd_values ().'
%!    what = sprintf ("input %d: %s", position, value{1});
%!    inputs = {"echo(0)", good_problem(), [], [], [], []};
%!    inputs{position} = value{2};
%!    text = evalc ("r = kalvoopt (inputs{:});");
%!    expect (r, 1200 * ! (is_none (value{2}) || may_be_accepted (value{2})), what);
%!    assert (r == 0 || any (strfind (text, word)), [what ": " text]);
%!    checked_call (what, "echo(0)");
%!  endfor
%!endfunction

%!test check_input (1, @(v) false, "Return code - 1200");
%!test check_input (2, @(v) false, "*** Error(1200): prob");
%!test check_input (3, @(v) isstruct (v) && (numel (v) > 1 || isempty (fieldnames (v))), "param");
%!test check_input (4, @(v) isstruct (v), "*** Error(1200): callback");
%!test check_input (5, @(v) false, "*** Error(1200): optserver");
%!test check_input (6, @(v) true, "");

## Their fields: whatever they hold, a failure says something, and the next call is right.
%!test
%! param = {"KLV_DPAR_TIME_LIMIT", "KLV_IPAR_OPTIMIZER", "KLV_SPAR_DATA_FILE", "x"};
%! for case_ = {3, param; 4, {"log", "loghandle", "iter", "iterhandle"}; 5, {"host"}}.'
%!   for field = case_{2}
%!     for value = odd_values ().'
%!       what = sprintf ("input %d, %s: %s", case_{1}, field{1}, value{1});
%!       inputs = {"minimize echo(1)", good_problem(), [], [], []};
%!       inputs{case_{1}}.(field{1}) = value{2};
%!       [r, text] = checked_call (what, inputs{:});
%!       assert (isscalar (r) && isreal (r) && (r == 0 || ! isempty (text)), what);
%!     endfor
%!   endfor
%! endfor

## Where memory runs out the call fails, and the session goes on.
%!test
%! limit = @(bytes) system (sprintf ("prlimit --pid %d --as=%s", getpid (), bytes));
%! assert (limit ("4000000000:"), 0);
%! assert (checked_call ("no memory", "echo(0)", struct ("a", sparse (2^31 - 1, 0))), 1051);
%! assert (limit ("unlimited:"), 0);
