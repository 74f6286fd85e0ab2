#pragma once

#include "TWCore/Model/Text.h"
#include "TWCore/Model/TextDecoding.h"
#include "Tarnwick/Viewer/FileWindow.h"
#include "Tarnwick/Viewer/ViewerMode.h"
#include "Tarnwick/Viewer/ViewerSubject.h"

#include <exception>

/// What a viewer says.
namespace tw::ViewerWords {

struct Reading {
    std::int64_t totalSize = 0;
    bool reachedEnd = false;
    ViewerMode mode = ViewerMode::text;
    TextDecoding::Encoding encoding = TextDecoding::Encoding::utf8;
    bool isFollowed = false;
};

/// The line below a text or a hex dump.
Text status(ViewerSubject const &subject, FileWindow const &window, Reading const &reading);

/// The line below an image, which is shown with as many pixels as `finest` has room for.
Text imageStatus(ViewerSubject const &subject, Picture const &picture, PictureBounds finest, std::int64_t totalSize);

Text searching(std::int64_t done, std::int64_t all);
Text notFound();
Text continuedAtTheBeginning();
Text continuedAtTheEnd();
Text cannotBeSought(TextDecoding::Encoding encoding);
Text noExpression();
Text noExpressionsIn(TextDecoding::Encoding encoding);
Text onlyAsciiInSets();

/// Why a followed file is shown anew.
Text replaced();
Text shortened();

Text tooLarge(std::int64_t size);
Text undecodable(PictureFailure why);
Text noFinerImage();

Text warning(Text words);

/// What a failure of reading says.
Text failure(std::exception_ptr const &failure);

/// Why that is not read.
Text notAFile(EntryKind kind);

Text onlySoManyLines(std::int64_t lines);

} // namespace tw::ViewerWords
