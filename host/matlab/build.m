% BUILD  Builds kalvoopt for MATLAB
%
%   build
%       Builds the toolbox for the MATLAB that runs, in the folder build/matlab/toolbox of this source tree, puts that
%       folder on the path and solves a small problem. A C++20 compiler, CMake 3.25, Ninja, zlib and nlohmann-json are
%       needed, and the engine's packages in build/deps: script/setup installs all of them on Debian 12.
%
%   folder = build (root, work)
%       Builds for the MATLAB that is installed in the folder root, in the folder work, and returns the toolbox's folder.
%       No problem is solved then.

function folder = build (root, work)
    source = fileparts (fileparts (fileparts (mfilename ('fullpath'))));
    is_for_this = nargin == 0;
    if is_for_this
        root = matlabroot ();
        work = fullfile (source, 'build', 'matlab');
    elseif nargin ~= 2
        error ('build: either no input, or the folder of MATLAB and the folder to build in');
    end
    check_folder (root);
    fprintf ('Building for the MATLAB in %s: this takes some minutes\n', root);
    folder = fullfile (work, 'toolbox');
    run_program (['cmake --preset release -S ' quoted(source) ' -B ' quoted(work) ' -DKALVO_TESTS=OFF' ...
                  ' -DKALVO_MATLAB=' quoted(root) ' -DKALVO_TOOLBOX_DIR=' quoted(folder)]);
    run_program (['cmake --build ' quoted(work)]);
    fprintf ('The toolbox is %s\n', folder);
    if is_for_this
        try_toolbox (folder);
    end
end

function check_folder (root)
    if ~exist (fullfile (root, 'extern', 'include', 'mex.h'), 'file')
        error ('build: %s is not the folder of a MATLAB: it has no extern/include/mex.h', root);
    end
end

% Programs that MATLAB starts find MATLAB's libraries first, which may be too old for them.
function run_program (command)
    [status, text] = system (['env -u LD_LIBRARY_PATH ' command ' 2>&1']);
    if status ~= 0
        fprintf ('%s\n', text);
        error ('build: a command has failed; its output stands above (what it needs: help build)\n  %s', command);
    end
end

function text = quoted (name)
    text = ['''' strrep(name, '''', '''\''''') ''''];
end

function try_toolbox (folder)
    addpath (folder);
    prob = struct ('a', sparse ([1 2; 3 1]), 'c', [1 1], 'blc', [4 3], 'blx', [0 0]);
    [r, res] = kalvoopt ('minimize echo(0)', prob);
    if r ~= 0 || abs (res.sol.bas.pobjval - 2.2) > 1e-6
        error ('build: kalvoopt works, but not as it should: response code %d', r);
    end
    fprintf ('It is on the path, and has solved a small problem. To keep it there: savepath\n');
end
