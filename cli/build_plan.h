#pragma once
// What `nvbuild build` makes of its command line before it builds: the working skin with the operator's
// edits in it and the build's inputs. The session file is read by the builder window's own rules, then every
// option given wins over it, so `build --session FILE` builds what the window that wrote FILE builds.

#include "cli/nvbuild.h"
#include "packager/build_job.h"
#include "recipe/recipe.h"
#include "skin/workspace.h"

namespace nv {

struct BuildPlan {
    Recipe recipe; // the decisions, the file's and the options'
    SkinWorkspace workspace;
    BuildInputs inputs;
};

// Naming a certificate source, or a value that only one source uses (--sign-pfx, --sign-thumbprint,
// --sign-dlib, --sign-dmdf, --sign-command), asks for a signature with that source, whatever the session file
// chose. Values of two sources without --sign-source are a usage error.
class RecipeOptions;
bool chooseSigningSource(const RecipeOptions& options, SigningOptions& signing, std::wstring& error);

// kExitOk with the plan; otherwise the command's exit code, its reason already on standard error (a usage
// error with the usage). Notes ("Not: ") go to standard error as they arise.
int planBuild(const Invocation& invocation, Console& console, BuildPlan& plan);

} // namespace nv
