% KALVOPLOT  Pictures of a solve and of a problem, in a window or in a PNG file
%
%   callback = kalvoplot ('progress')
%   callback = kalvoplot ('progress', file)
%       A callback record for kalvoopt: best value and bound over time, and the gap between them, drawn in a window while
%       the problem is solved, or written to a PNG file at the end, for which no display is needed.
%
%           [r, res] = kalvoopt ('minimize', prob, [], kalvoplot ('progress', 'solve.png'));
%
%   kalvoplot ('matrix', prob)
%   kalvoplot ('matrix', prob, file)
%       The pattern of a problem: a point of the picture is the darker the more entries fall on it. From the top, each with its
%       name at the right: the objective (c and the terms of qoval; barc), the constraints (a and the terms of qcval; bara),
%       the affine expressions, a band for each domain (f; barf), and a row for each cone of variables. Columns are the
%       variables, then the lower triangles of the matrices of bardim, a band each. A part that prob does not have takes no
%       place.
%
%   data = kalvoplot ('data')
%       The numbers of the last progress picture: columns seconds, objective, bound; NaN for values that were not known yet.
%
%   See also: kalvoopt

function result = kalvoplot (what, varargin)
    persistent recording
    if nargin < 1
        error ('kalvoplot: say what to draw: ''progress'', ''matrix'' or ''data''');
    elseif isstruct (what) && numel (varargin) == 2     % kalvoopt calls its progress function
        recording = note (recording, what, varargin{:});
        result = 0;
    elseif ~ischar (what)
        error ('kalvoplot: the first input is ''progress'', ''matrix'' or ''data''');
    elseif strcmp (what, 'progress')
        file = file_name (varargin{:});
        recording = struct ('data', zeros (0, 3), 'drawn', -Inf, 'axes', []);
        result = struct ('iter', 'kalvoplot', 'iterhandle', struct ('file', file));
    elseif strcmp (what, 'matrix') && ~isempty (varargin)
        draw_matrix (varargin{1}, file_name (varargin{2:end}));
    elseif strcmp (what, 'data') && isempty (varargin)
        result = zeros (0, 3);
        if ~isempty (recording)
            result = recording.data;
        end
    else
        error ('kalvoplot: no such picture, or inputs are missing: see help kalvoplot');
    end
end

function file = file_name (varargin)
    file = '';
    if numel (varargin) > 1 || (~isempty (varargin) && ~ischar (varargin{1}))
        error ('kalvoplot: the last input is the name of a PNG file');
    elseif ~isempty (varargin)
        file = varargin{1};
        place = fopen (file, 'a');     % better known now than after a long solve
        if place < 0
            error ('kalvoplot: the file %s cannot be written', file);
        end
        fclose (place);
    end
end

% One call of the progress function. A picture that cannot be drawn must not end the solve.
function recording = note (recording, handle, caller, info)
    begin_optimize = 1;
    end_optimize = 2;
    if isempty (recording) || caller == begin_optimize
        recording = struct ('data', zeros (0, 3), 'drawn', -Inf, 'axes', []);
    end
    known = @(value, is_known) value + 0 / is_known;     % NaN where it is not
    if info.KLV_IINF_MIP_SOLUTIONS > 0 || info.KLV_DINF_MIP_BOUND ~= 0
        now = [known(info.KLV_DINF_MIP_OBJECTIVE, info.KLV_IINF_MIP_SOLUTIONS > 0), info.KLV_DINF_MIP_BOUND];
    else
        now = [known(info.KLV_DINF_PRIMAL_OBJECTIVE, info.KLV_DINF_PRIMAL_OBJECTIVE ~= 0), ...
               known(info.KLV_DINF_DUAL_OBJECTIVE, info.KLV_DINF_DUAL_OBJECTIVE ~= 0)];
    end
    now(isinf (now)) = NaN;
    recording.data(end + 1, :) = [info.KLV_DINF_PROGRESS_TIME, now];
    is_last = caller == end_optimize;
    in_window = isempty (handle.file);
    if recording.drawn < Inf && (is_last || (in_window && info.KLV_DINF_PROGRESS_TIME > recording.drawn + 0.3))
        try
            recording = draw_progress (recording, in_window);
            recording.drawn = info.KLV_DINF_PROGRESS_TIME;
            if is_last && ~in_window
                save_figure (get (recording.axes(1), 'parent'), handle.file);
            end
        catch problem
            warning ('kalvoplot: the solve goes on without a picture: %s', problem.message);
            recording.drawn = Inf;
        end
    end
end

function recording = draw_progress (recording, in_window)
    if isempty (recording.axes) || ~all (ishandle (recording.axes))
        picture = new_figure (in_window);
        recording.axes = [axes('parent', picture, 'position', [0.17 0.50 0.77 0.38], 'fontsize', 9), ...
                          axes('parent', picture, 'position', [0.17 0.15 0.77 0.22], 'fontsize', 9)];
    end
    t = recording.data(:, 1);
    objective = recording.data(:, 2);
    bound = recording.data(:, 3);
    gap = 100 * abs (objective - bound) ./ max (1, abs (objective));
    gap(gap < 1e-6) = 1e-6;
    top = recording.axes(1);
    set (recording.axes, 'nextplot', 'replacechildren');
    lines = plot (top, t, objective, 'b-', t, bound, 'r-');
    set (lines, 'linewidth', 1.5);
    title (top, 'Objective (blue) and bound (red)');
    ylabel (top, 'objective');
    grid (top, 'on');
    bottom = recording.axes(2);
    semilogy (bottom, t, gap, 'k-', 'linewidth', 1.5);
    set (bottom, 'yscale', 'log');
    ylabel (bottom, 'gap (%)');
    xlabel (bottom, 'seconds');
    grid (bottom, 'on');
    drawnow ();
end

function draw_matrix (prob, file)
    if ~isstruct (prob) || numel (prob) ~= 1 || ~isfield (prob, 'a') || ~isnumeric (prob.a) ...
            || (isempty (prob.a) && ~(isfield (prob, 'f') || isfield (prob, 'bardim')))
        error ('kalvoplot: the problem has no matrix prob.a to be drawn');
    end
    [row, column, bands, edges] = pattern (prob);
    m = bands(end).last;
    n = edges(end);
    % Entries that fall on one point are counted, so that a large matrix takes no longer to draw than a small one.
    high = min (m, 400);
    wide = min (n, 600);
    count = accumarray ([ceil(row * high / m), ceil(column * wide / n)], 1, [high, wide]);
    most = max (1, full (max (count(:))));
    picture = new_figure (isempty (file));
    place = axes ('parent', picture, 'position', [0.12 0.15 0.66 0.72]);
    imagesc (place, [1 n], [1 m], -log (1 + count));
    caxis (place, [-log(1 + most), 0]);
    colormap (place, gray (64));
    title (place, sprintf ('%d constraints, %d variables, %d entries (%.2g%%)', size (prob.a), numel (row), ...
                           100 * numel (row) / (m * n)));
    xlabel (place, 'variable');
    ylabel (place, 'row');
    draw_bands (place, bands, edges);
    if ~isempty (file)
        save_figure (picture, file);
    end
end

% Lines between the bands of rows and of columns, and the names of rows, as many as can be read.
function draw_bands (place, bands, edges)
    n = edges(end);
    m = bands(end).last;
    for edge = edges(1:end - 1)
        line ('parent', place, 'xdata', edge * [1 1] + 0.5, 'ydata', [0.5 m + 0.5], 'color', 'b');
    end
    free = -Inf;
    for band = bands
        if band.last < m
            line ('parent', place, 'xdata', [0.5 n + 0.5], 'ydata', band.last * [1 1] + 0.5, 'color', 'r');
        end
        middle = (band.first + band.last) / 2;
        if numel (bands) > 1 && middle >= free
            text (n * 1.01 + 0.5, middle, band.name, 'parent', place, 'fontsize', 8, 'interpreter', 'none');
            free = middle + m / 25;
        end
    end
end

% The entries of all parts below one another. edges: the last column of the variables and of each matrix.
function [row, column, bands, edges] = pattern (prob)
    [m, n] = size (prob.a);
    orders = vector (prob, 'bardim');
    edges = n + cumsum ([0; orders .* (orders + 1) / 2])';
    bands = struct ('name', {}, 'first', {}, 'last', {});
    row = zeros (0, 1);
    column = zeros (0, 1);
    if any (isfield (prob, {'qoval', 'f', 'cones', 'bardim'}))
        c = find (vector (prob, 'c'));
        terms = [vector(prob, 'qosubi'); vector(prob, 'qosubj')];
        [~, matrices] = matrix_terms (prob, 'barc', orders, edges);
        column = [c; terms; matrices];
        row = ones (size (column));
        bands(end + 1) = struct ('name', 'objective', 'first', 1, 'last', 1);
    end
    above = numel (bands);
    if m > 0
        [i, j] = find (prob.a);
        constraint = vector (prob, 'qcsubk');
        [k, matrices] = matrix_terms (prob, 'bara', orders, edges);
        row = [row; above + [i(:); constraint; constraint; k]];
        column = [column; j(:); vector(prob, 'qcsubi'); vector(prob, 'qcsubj'); matrices];
        bands(end + 1) = struct ('name', 'constraints', 'first', above + 1, 'last', above + m);
        above = above + m;
    end
    if isfield (prob, 'f') && ~isempty (prob.f)
        [i, j] = find (prob.f);
        [k, matrices] = matrix_terms (prob, 'barf', orders, edges);
        row = [row; above + [i(:); k]];
        column = [column; j(:); matrices];
        [names, sizes] = domains (prob);
        for d = 1:numel (sizes)
            bands(end + 1) = struct ('name', names{d}, 'first', above + 1, 'last', above + sizes(d));
            above = above + sizes(d);
        end
    elseif isfield (prob, 'cones')
        [names, members] = cones_of_variables (prob.cones);
        for d = 1:numel (members)
            above = above + 1;
            row = [row; above * ones(numel (members{d}), 1)];
            column = [column; members{d}(:)];
            bands(end + 1) = struct ('name', names{d}, 'first', above, 'last', above);
        end
    end
    if any (row < 1 | row > above) || any (column < 1 | column > edges(end)) || above == 0 || edges(end) == 0
        error ('kalvoplot: the problem has nothing to be drawn, or indices out of range');
    end
end

function values = vector (prob, name)
    values = zeros (0, 1);
    if isfield (prob, name)
        values = double (full (prob.(name)));
        values = values(:);
    end
end

% Rows (of terms that have them) and columns of the entries of matrices.
function [row, column] = matrix_terms (prob, name, orders, edges)
    row = zeros (0, 1);
    column = zeros (0, 1);
    if isfield (prob, name)
        terms = prob.(name);
        row = vector (terms, 'subi');
        j = vector (terms, 'subj');
        if any (j < 1 | j > numel (orders))
            error ('kalvoplot: prob.%s.subj has indices out of range', name);
        end
        k = vector (terms, 'subk');
        l = vector (terms, 'subl');
        before = edges(1:end - 1)';
        column = before(j) + (l - 1) .* orders(j) - (l - 1) .* (l - 2) / 2 + k - l + 1;
    end
end

% Names and sizes of the domains of all rows of f.
function [names, sizes] = domains (prob)
    known = {'free', 'zero', 'nonnegative', 'nonpositive', 'quadratic', 'rotated quadratic', 'primal exponential', ...
             'dual exponential', 'primal power', 'dual power', 'primal geometric mean', 'dual geometric mean', 'semidefinite'};
    list = vector (prob, 'accs');
    powers = [8 9];
    if isfield (prob, 'cones')
        known = cone_names ();
        list = vector (prob, 'cones');
        powers = [4 5];
    end
    names = {};
    sizes = zeros (0, 1);
    position = 1;
    while position < numel (list)
        type = list(position);
        if ~any (type == 0:numel (known) - 1)
            error ('kalvoplot: a domain has an unknown type');
        end
        names{end + 1} = known{type + 1};
        sizes(end + 1, 1) = list(position + 1);
        position = position + 2;
        if any (type == powers) && position <= numel (list)
            position = position + 1 + list(position);
        end
    end
    if isempty (list)
        names = {'no domain'};
        sizes = size (prob.f, 1);
    elseif sum (sizes) ~= size (prob.f, 1) || any (sizes < 1)
        error ('kalvoplot: the sizes of domains do not match the rows of prob.f');
    end
end

function names = cone_names ()
    names = {'quadratic', 'rotated quadratic', 'primal exponential', 'dual exponential', 'primal power', 'dual power', 'zero'};
end

% Names and members of the cones of variables, given as one structure or as a cell of them.
function [names, members] = cones_of_variables (cones)
    names = {};
    members = {};
    types = {};
    if iscell (cones)
        for k = 1:numel (cones)
            types{k} = cones{k}.type;
            members{k} = cones{k}.sub;
        end
    elseif isstruct (cones)
        starts = [cones.subptr(:); numel(cones.sub) + 1];
        for k = 1:numel (cones.type)
            types{k} = cones.type(k);
            members{k} = cones.sub(starts(k):starts(k + 1) - 1);
        end
    end
    known = cone_names ();
    for k = 1:numel (types)
        if ischar (types{k})
            name = regexprep (types{k}, '^.*CONE_', '');
            names{k} = lower (strrep (name, '_', ' '));
        else
            names{k} = known{types{k} + 1};
        end
    end
end

function picture = new_figure (in_window)
    visible = {'off', 'on'};
    picture = figure ('visible', visible{1 + in_window}, 'name', 'kalvoplot', 'color', 'white');
end

function save_figure (picture, file)
    options = {'-dpng'};
    if exist ('OCTAVE_VERSION', 'builtin')
        options = {'-dpng', '-S900,600'};
        if strcmp (graphics_toolkit (), 'gnuplot')
            options{1} = '-dpngcairo';     % gnuplot's own, which needs no other program
        end
    end
    print (picture, file, options{:});
    close (picture);
end
