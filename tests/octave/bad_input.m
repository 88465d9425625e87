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
%!    "logical", true; "logicals", [true;false;true];
%!    "single", single(1); "singles", single([1 2 3]);
%!    "int8", int8(1); "int8s", int8([1;2;3]); "uint8s", uint8([1 2 3]); "int16s", int16([1 2 3]);
%!    "uint16s", uint16([1 2 3]); "int32s", int32([1 2 3]); "uint32s", uint32([1 2 3]); "int64s", int64([1 2 3]);
%!    "uint64s", uint64([1 2 3]);
%!    "character", "x"; "text", "abc"; "texts", ["ab";"cd";"ef"]; "text with a zero", char([97 0 98]); "UTF-8", "zé";
%!    "cell", {1}; "cell of 2 texts", {"a","b"}; "cell of 3 texts", {"a";"";"c"}; "cell of 3", {1,{},@sin};
%!    "unset cell", cell(3,1);
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
%!  none = is_none (v);
%!  switch field
%!    case "a"
%!      if ! isa (v, "double") || ! isreal (v) || ndims (v) > 2
%!        code = 1200;
%!      else
%!        code = 3004 * ! all (isfinite (nonzeros (v)));
%!      endif
%!    case "c"
%!      if none
%!        code = 0;
%!      elseif ! is_vector (v, 3, true) || ! isreal (v)
%!        code = 1200;
%!      else
%!        code = 3004 * ! all (isfinite (v));
%!      endif
%!    case {"blc", "buc", "blx", "bux"}
%!      if none
%!        code = 0;
%!      elseif ! is_vector (v, 2 + (field(3) == "x"), true)
%!        code = 1201;
%!      elseif ! isreal (v)
%!        code = 1200;
%!      else
%!        side = 1 - 2 * (field(2) == "u");
%!        code = 1400 * any (side * v >= 1e20);
%!      endif
%!    case "cfix"
%!      if ! isa (v, "double") || issparse (v) || numel (v) != 1 || ! isreal (v)
%!        code = 1200;
%!      else
%!        code = 3004 * ! isfinite (v);
%!      endif
%!    case {"qosubi", "qosubj", "qcsubk", "qcsubi", "qcsubj"}
%!      code = 1201 * ! none;
%!    case {"qoval", "qcval", "cones", "accs", "bardim", "prisen", "duasen", "sol"}
%!      code = 1200 * ! none;
%!    case {"f", "g"}
%!      code = 1200;
%!    case {"barc", "bara", "barf", "primalrepair", "objsense", "unknown"}
%!      code = 0;
%!    case "ints"
%!      code = 1200 * ! (none || (isstruct (v) && numel (v) == 1 && (! isfield (v, "sub") || isstruct (v.sub))));
%!    case "ints.sub"
%!      if none || ! is_vector (v, numel (v), false)
%!        code = 0;
%!      else
%!        code = 1200 * ! (isreal (v) && all (fix (v) >= 1 & fix (v) <= 3));
%!      endif
%!    case "names"
%!      code = 1200 * (isstruct (v) && ! none && ! (numel (v) == 1 && isempty (fieldnames (v))));
%!    case {"names.name", "names.obj"}
%!      code = 1200 * ! (ischar (v) && ! any (v(:) == 0));
%!    case {"names.var", "names.con"}
%!      n = 2 + (field(7) == "v");
%!      if isobject (v) || numel (v) != n
%!        code = 1201;
%!      else
%!        code = 1200 * ! (iscell (v) && all (cellfun (@ischar, v(:))));
%!      endif
%!    case {"names.cone", "names.acc", "names.barvar"}
%!      code = 0;
%!    case "names.unknown"
%!      code = 1200;
%!  endswitch
%!endfunction

%!function prob = good_problem ()
%!  prob.a = sparse ([1 1 0; 0 1 1]);
%!  prob.c = [1 2 3];
%!  prob.blc = [1; 1];
%!  prob.blx = [0 0 0];
%!endfunction

## A call with its text, which no error of the host may interrupt.
%!function [r, res, text] = quiet_call (varargin)
%!  r = res = [];
%!  text = evalc ("[r, res] = kalvoopt (varargin{:});");
%!endfunction

%!function expect (observed, expected, what)
%!  if ! isequal (observed, expected)
%!    error ("%s: %s, expected %s", what, disp (observed), disp (expected));
%!  endif
%!endfunction

%!function check_next_call (what)
%!  [r, res, text] = quiet_call ("minimize echo(0)", good_problem ());
%!  expect (r, 0, what);
%!  assert (abs (res.sol.bas.pobjval - 2) < 1e-9, what);
%!  expect (text, "", what);
%!endfunction

%!function check_field (field, message)
%!  names = strsplit (field, ".");
%!  for value = odd_values ().'
%!    what = [field " = " value{1}];
%!    if strcmp (field, "a")
%!      prob = struct ("a", 0);
%!    else
%!      prob = good_problem ();
%!    endif
%!    if numel (names) == 1
%!      prob.(field) = value{2};
%!    else
%!      prob.(names{1}).(names{2}) = value{2};
%!    endif
%!    [r, res, text] = quiet_call ("echo(0)", prob);
%!    expect (r, code_of (field, value{2}), what);
%!    expect (res.rcode, r, what);
%!    if r == 0
%!      expect (text, "", what);
%!    elseif r == 3004
%!      assert (! isempty (res.rmsg), what);
%!    else
%!      assert (any (strfind (text, names{end})), [what ": " text]);
%!      assert (strncmp (text, "*** Error(", 10), what);
%!    endif
%!    check_next_call (what);
%!  endfor
%!endfunction

%!test check_field ("a");
%!test check_field ("c");
%!test check_field ("cfix");
%!test check_field ("blc");
%!test check_field ("buc");
%!test check_field ("blx");
%!test check_field ("bux");
%!test
%! for field = {"qosubi", "qosubj", "qcsubk", "qcsubi", "qcsubj", "qoval", "qcval"}
%!   check_field (field{1});
%! endfor
%!test
%! for field = {"f", "g", "accs", "cones", "bardim", "barc", "bara", "barf"}
%!   check_field (field{1});
%! endfor
%!test
%! for field = {"prisen", "duasen", "sol", "primalrepair", "objsense", "unknown"}
%!   check_field (field{1});
%! endfor
%!test check_field ("ints");
%!test check_field ("ints.sub");
%!test
%! for field = {"names", "names.name", "names.obj", "names.var", "names.con", "names.cone", "names.acc", ...
%!              "names.barvar", "names.unknown"}
%!   check_field (field{1});
%! endfor

## A missing or unset `a` is the only thing that is said.
%!test
%! for prob = {struct(), struct("c", "x"), struct("A", 1)}
%!   [r, ~, text] = quiet_call ("echo(0)", prob{1});
%!   assert (r, 1200);
%!   assert (text, "*** Error(1200): prob.a not specified\n");
%! endfor

## The problem record itself.
%!test
%! for value = odd_values ().'
%!   v = value{2};
%!   [r, ~, text] = quiet_call ("echo(0)", v);
%!   if is_none (v)
%!     expect (r, 0, value{1});
%!   else
%!     expect (r, 1200, value{1});
%!     assert (strncmp (text, "*** Error(1200): prob", 21), value{1});
%!   endif
%!   check_next_call (value{1});
%! endfor

## The other inputs: empty means absent, and a value of a wrong class is refused before the problem is looked at.
%!function check_input (position, may_be_accepted, word)
%!  for value = odd_values ().'
%!    v = value{2};
%!    what = sprintf ("input %d: %s", position, value{1});
%!    inputs = {"echo(0)", good_problem(), [], [], [], []};
%!    inputs{position} = v;
%!    text = evalc ("r = kalvoopt (inputs{:});");
%!    if is_none (v) || may_be_accepted (v)
%!      expect (r, 0, what);
%!    else
%!      expect (r, 1200, what);
%!      assert (any (strfind (text, word)), [what ": " text]);
%!    endif
%!    check_next_call (what);
%!  endfor
%!endfunction

%!test check_input (1, @(v) false, "Return code - 1200");
%!test check_input (3, @(v) isstruct (v) && (numel (v) > 1 || isempty (fieldnames (v))), "param");
%!test check_input (4, @(v) isstruct (v), "*** Error(1200): callback");
%!test check_input (5, @(v) false, "*** Error(1200): optserver");
%!test check_input (6, @(v) true, "");

## Fields of the other inputs: whatever they hold, a failure says something, and the next call is right.
%!function check_record (position, fields)
%!  for field = fields
%!    for value = odd_values ().'
%!      what = sprintf ("input %d, %s: %s", position, field{1}, value{1});
%!      inputs = {"minimize echo(1)", good_problem(), [], [], []};
%!      inputs{position}.(field{1}) = value{2};
%!      text = evalc ("r = kalvoopt (inputs{:});");
%!      assert (isscalar (r) && isreal (r), what);
%!      assert (r == 0 || ! isempty (text), what);
%!      check_next_call (what);
%!    endfor
%!  endfor
%!endfunction

%!test
%! [~, res] = quiet_call ("param echo(0)");
%! names = fieldnames (res.param).';
%! kinds = cellfun (@(name) name(5), names);
%! check_record (3, [names(find (kinds == "D", 1)), names(find (kinds == "I", 1)), names(find (kinds == "S", 1)), "x"]);
%!test check_record (4, {"log", "loghandle", "iter", "iterhandle"});
%!test check_record (5, {"host"});
