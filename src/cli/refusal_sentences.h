#pragma once

#include "model/outcome.h"
#include "model/project.h"

#include <string>

namespace framewright {

/// What the command line says of a refused edit, a whole sentence in the words of its commands.
///
/// `project` is the open one: it knows the references and names of the refusal's subject.
std::string sentenceOf(Refusal const& refusal, Project const& project);

} // namespace framewright
