## Every class of value in every input and every field of it: the call is accepted, or refused by the name of what is wrong,
## and leaves the session able to make the next call.

## Values of every class and shape, each with a name.
%!function values = odd_values ()
%!  values = {
%!    "empty", []; "empty row", zeros(1,0); "empty column", zeros(0,1); "empty 3-D", zeros(0,0,3);
%!    "empty text", ""; "empty cell", {}; "empty records", struct([]); "empty int8", zeros(0,3,"int8");
%!    "empty logical", false(0,0); "empty sparse", sparse(0,3); "empty sparse logical", sparse(false(3,0));
%!    "number", 1; "negative", -1; "half", 0.5; "NaN", NaN; "Inf", Inf; "minus Inf", -Inf; "huge", 1e300;
%!    "beyond 32 bits", 2^32+1; "2^32", 2^32; "complex number", 1+2i;
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
%!    "record", struct("x",1); "record without fields", struct(); "records", struct("x",{1,2,3}); "deep", {{{[], @sin}}};
%!    "record of records", struct("sub",struct("sub",1),"name",struct());
%!    "handle", @sin; "anonymous function", @(x)x; "map", containers.Map("a",1); "empty map", containers.Map();
%!    "object", inputParser()};
%!endfunction

%!function prob = good_problem ()
%!  prob = struct ("a", sparse ([1 1 0; 0 1 1]), "c", [1 2 3], "blc", [1; 1], "blx", [0 0 0]);
%!endfunction

## A call with its text, and then a good one.
%!function [r, text] = checked_call (what, varargin)
%!  text = evalc ("r = kalvoopt (varargin{:});");
%!  good_text = evalc ("[good, answer] = kalvoopt ('minimize echo(0)', good_problem ());");
%!  assert (good == 0 && isempty (good_text) && abs (answer.sol.bas.pobjval - 2) < 1e-9, what);
%!endfunction

## The inputs of a call in which one of them, or a field of it, has this value.
%!function inputs = inputs_with (number, names, value)
%!  inputs = {"minimize echo(0)"(1 + 9 * (number < 3):end), good_problem(), [], [], [], []};
%!  if isempty (names{1})
%!    inputs{number} = value;
%!  elseif strcmp (names{1}, "a")        # of whatever size
%!    inputs{2} = struct ("a", {value});
%!  elseif numel (names) == 1        # setfield cannot set a field to a map
%!    inputs{number}.(names{1}) = value;
%!  elseif numel (names) == 2
%!    inputs{number}.(names{1}).(names{2}) = value;
%!  else
%!    inputs{number}.(names{1}).(names{2}).(names{3}) = value;
%!  endif
%!endfunction

## An input, its fields, and what a refusal says: by default the field's name.
%!function check (number, fields, word)
%!  for field = fields
%!    names = strsplit (field{1}, ".");
%!    for value = odd_values ().'
%!      what = sprintf ("input %d %s = %s", number, field{1}, value{1});
%!      inputs = inputs_with (number, names, value{2});
%!      [r, text] = checked_call (what, inputs{:});
%!      assert (isscalar (r) && isreal (r), what);
%!      unsolved = number == 2 && r == 3013;        # a class of problems that is not solved yet
%!      if r > 0 && r < 1e5 && r != 3004 && ! unsolved        # no number that is wrong
%!        if isempty (text) && strcmp (names{end}, "accs")
%!          [~, res] = kalvoopt (inputs{1:2});        # the solver refuses a domain
%!          text = res.rmsg;
%!        endif
%!        assert (any (strfind (text, {word, names{end}}{1 + isempty (word)})), [what ": " text]);
%!      elseif number > 1 && r != 100007        # no banner; stopped by a function that fails
%!        assert (isempty (text), [what ": " text]);
%!      endif
%!    endfor
%!  endfor
%!endfunction

%!test check (1, {""}, "Return code - 1200");
%!test check (2, {""}, "(1200): prob");
%!test check (3, {""}, "param");
%!test check (4, {""}, "(1200): callback");
%!test check (5, {""}, "(1200): optserver");
%!test check (6, {""}, "");
%!test check (2, {"a", "c", "cfix", "blc", "buc", "blx", "bux", "f", "g", "cones", "bardim", "barc", "bara", "barf"}, "");
%!test check (2, {"accs"}, "a");
%!test check (2, {"qosubi", "qosubj", "qcsubk", "qcsubi", "qcsubj", "prisen", "duasen"}, "");
%!test check (2, {"qoval", "qcval"}, "prob.q");
%!test check (2, {"primalrepair", "objsense", "unknown", "ints", "ints.sub", "sol", "sol.bas.skc", "sol.bas.skx"}, "");
%!test check (2, {"sol.bas.xc", "sol.bas.y", "sol.bas.xx", "sol.bas.slx"}, "");
%!test check (2, {"names", "names.unknown", "names.cone", "names.acc", "names.barvar"}, "");
%!test check (2, {"names.name", "names.obj", "names.var", "names.con"}, "");
%!test check (3, {"KLV_DPAR_TIME_LIMIT", "KLV_IPAR_OPTIMIZER", "KLV_SPAR_DATA_FILE", "x"}, "");
%!test check (4, {"log", "iter"}, "callback");
%!test check (4, {"loghandle", "iterhandle"}, "");
%!test check (5, {"host"}, "server");

## Whatever a progress function answers: a number whose whole part is not 0 stops; what is no number does not.
%!function stop = answer (varargin)
%!  global what_it_is;
%!  stop = what_it_is;
%!endfunction
%!test
%! global what_it_is;
%! for value = odd_values ().'
%!   what_it_is = value{2};
%!   callback = struct ("iter", "answer", "iterhandle", 1);
%!   stops = isa (value{2}, "double") && ! isempty (value{2}) && fix (real (value{2}(1))) != 0;
%!   assert (checked_call (value{1}, "minimize echo(0)", good_problem (), [], callback) == 100007 * stops, value{1});
%! endfor

## Where memory runs out the call fails, and the session goes on.
%!test
%! limit = @(bytes) system (sprintf ("prlimit --pid %d --as=%s", getpid (), bytes));
%! assert (limit ("4000000000:"), 0);
%! assert (checked_call ("no memory", "echo(0)", struct ("a", sparse (2^31 - 1, 0))), 1051);
%! assert (limit ("unlimited:"), 0);
