#pragma once

#include "TWCore/Model/DirectorySnapshot.h"
#include "TWCore/Model/Text.h"
#include "TWEngine/Preview/PictureAnswer.h"
#include "TWEngine/Transfer/Measure.h"
#include "Tarnwick/Preview/PreviewKind.h"
#include "Tarnwick/Preview/PreviewSubject.h"

/// What a preview says.
namespace tw::PreviewWords {

/// What it is, how large and how old.
Text facts(Text title, PreviewSubject const &subject);

/// With the size of the whole picture; that of a drawing or of a page means nothing.
Text pictureFacts(PreviewKind const &kind, Picture const &picture, PreviewSubject const &subject);

enum class Extent { whole, beginning };

Text textFacts(std::string const &encoding, Extent extent, PreviewSubject const &subject);

/// Of what is no file and no folder.
Text title(EntryKind kind);
Text notOpened(EntryKind kind);

Text nothingToSee();
Text tooBig(PreviewSubject const &subject);
Text tooBig(); ///< without a size that is known
Text fetching(PreviewSubject const &subject);
Text failure(PictureFailure failure, PreviewKind const &kind);

/// What stands in a folder.
Text count(DirectorySnapshot const &listing);

enum class Measuring { underWay, done };

/// With the size of all that lies below it.
Text measured(Text const &count, Measure const &sum, Measuring measuring);

} // namespace tw::PreviewWords
