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
%       The pattern of prob.a: a point of the picture is the darker the more entries fall on it.
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
    if ~isstruct (prob) || numel (prob) ~= 1 || ~isfield (prob, 'a') || ~isnumeric (prob.a) || isempty (prob.a)
        error ('kalvoplot: the problem has no matrix prob.a to be drawn');
    end
    [m, n] = size (prob.a);
    [row, column] = find (prob.a);
    % Entries that fall on one point are counted, so that a large matrix takes no longer to draw than a small one.
    high = min (m, 400);
    wide = min (n, 600);
    count = accumarray ([ceil(row(:) * high / m), ceil(column(:) * wide / n)], 1, [high, wide]);
    most = max (1, full (max (count(:))));
    picture = new_figure (isempty (file));
    place = axes ('parent', picture, 'position', [0.17 0.15 0.77 0.72]);
    imagesc (place, [1 n], [1 m], -log (1 + count));
    caxis (place, [-log(1 + most), 0]);
    colormap (place, gray (64));
    title (place, sprintf ('%d constraints, %d variables, %d entries (%.2g%%)', m, n, numel (row), ...
                           100 * numel (row) / (m * n)));
    xlabel (place, 'variable');
    ylabel (place, 'constraint');
    if ~isempty (file)
        save_figure (picture, file);
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
