% Pictures are written without a display, and what cannot be drawn is said at once.
%!function prob = small ()
%!  prob = struct ("a", sparse ([3 2 4; 0 1 1]), "c", [5 4 7], "buc", [7 2], "blx", zeros (1, 3), "bux", ones (1, 3));
%!  prob.ints.sub = 1:3;
%!endfunction

%!test
%! file = [tempname() ".png"];
%! [r, res] = kalvoopt ("maximize echo(0)", small (), [], kalvoplot ("progress", file));
%! assert (r, 0);
%! assert (imfinfo (file).Format, "PNG");
%! delete (file);
%! data = kalvoplot ("data");
%! assert (data(end, 2:3), res.sol.int.pobjval * [1 1], 1e-9);
%! assert (issorted (data(:, 1)));

%!test  # two entries of ten columns: dark where they are, white elsewhere
%! file = [tempname() ".png"];
%! kalvoplot ("matrix", struct ("a", sparse ([1 2], [1 10], 1, 2, 10)), file);
%! picture = double (imread (file))(:, :, 1);
%! delete (file);
%! dark = picture(60:end - 120, 160:end - 60) < 60;
%! assert (any (dark(1:150, 1:300)(:)) && any (dark(end - 150:end, end - 300:end)(:)));
%! assert (mean (dark(:)) < 0.25);

%!function picture = drawn (prob)
%!  file = [tempname() ".png"];
%!  kalvoplot ("matrix", prob, file);
%!  picture = double (imread (file))(:, :, 1);
%!  delete (file);
%!endfunction

%!test  # each part of a problem with cones and matrices leaves its mark
%! whole = struct ("a", sparse (2, 3), "c", [1 0 0], "bardim", [2 1], "f", sparse (1:4, [1 2 3 1], 1), "accs", [4 3 1 1]);
%! terms = struct ("subi", 1, "subj", 1, "subk", 2, "subl", 1, "val", 1);
%! quadratic = struct ("a", sparse (2, 3), "qosubi", 3, "qosubj", 2, "qoval", 1);
%! of_constraint = struct ("a", sparse (2, 3), "qcsubk", 2, "qcsubi", 1, "qcsubj", 1, "qcval", 1, "bardim", []);
%! cone = struct ("a", sparse (2, 3), "cones", {{struct("type", "KLV_CONE_QUADRATIC", "sub", [3 1])}});
%! parts = {whole, "c", []; whole, "accs", [4 2 1 2]; whole, "f", sparse(4, 3); whole, "bara", terms; whole, "barf", terms;
%!          whole, "barc", rmfield(terms, "subi"); quadratic, "qosubi", 1; of_constraint, "qcsubk", 1;
%!          cone, "cones", {struct("type", "KLV_CONE_QUADRATIC", "sub", [3 2])}};
%! for k = 1:rows (parts)
%!   changed = parts{k, 1};
%!   changed.(parts{k, 2}) = parts{k, 3};
%!   assert (any (any (drawn (parts{k, 1}) != drawn (changed))), parts{k, 2});
%! endfor

%!error <do not match the rows> kalvoplot ("matrix", struct ("a", sparse (1, 1), "f", speye (1), "accs", [4 3]))
%!error <cannot be written> kalvoplot ("progress", "/nowhere/at/all.png")
%!error <no such picture> kalvoplot ("graph")
%!error <say what to draw> kalvoplot ()
%!error <no matrix> kalvoplot ("matrix", struct ("c", 1))
%!error <name of a PNG file> kalvoplot ("progress", 5)
