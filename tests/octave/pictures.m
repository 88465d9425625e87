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

%!error <cannot be written> kalvoplot ("progress", "/nowhere/at/all.png")
%!error <no such picture> kalvoplot ("graph")
%!error <say what to draw> kalvoplot ()
%!error <no matrix> kalvoplot ("matrix", struct ("c", 1))
%!error <name of a PNG file> kalvoplot ("progress", 5)
