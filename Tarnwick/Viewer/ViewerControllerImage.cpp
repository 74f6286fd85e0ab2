// A file as an image, instead of its rows.

#include "Tarnwick/Viewer/ViewerController.h"
#include "Tarnwick/Viewer/ViewerWords.h"

#include <utility>

namespace tw {

void ViewerController::readImage()
{
    if (!mayRead)
        return show();
    if (totalSize > PictureReading::mostBytes)
        return fail(ViewerWords::tooLarge(totalSize));
    begin<PictureReading::Result>(PictureReading::read(of.file, of.name(), totalSize, of.decode),
                                  [this](auto result, auto const &failure) {
                                      if (failure)
                                          return fail(ViewerWords::failure(failure));
                                      imageArrived(*std::move(result));
                                  });
    underWay = Purpose::jump;
    isRefined = false;
    notice = {};
    show();
}

void ViewerController::imageArrived(PictureReading::Result result)
{
    if (result) {
        picture = std::make_shared<Picture const>(*std::move(result));
        return show();
    }
    showAs(ViewerMode::hex);
    fail(ViewerWords::undecodable(result.error()));
}

void ViewerController::refineImage()
{
    auto const isWhole = picture && picture->width >= picture->wholeWidth;
    if (!picture || underWay || isWhole || !picture->furtherFrames.empty() || std::exchange(isRefined, true))
        return;
    auto const room = PictureBounds::ofWhole(picture->wholeWidth, picture->wholeHeight);
    begin<PictureReading::Result>(PictureReading::read(of.file, of.name(), totalSize, of.decode, room),
                                  [this](auto result, auto const &failure) {
                                      if (failure)
                                          return fail(ViewerWords::failure(failure));
                                      finerImageArrived(*std::move(result));
                                  });
    underWay = Purpose::jump;
    show();
}

/// Without it, what is on show stays.
void ViewerController::finerImageArrived(PictureReading::Result result)
{
    if (!result)
        return fail(ViewerWords::noFinerImage());
    picture = std::make_shared<Picture const>(*std::move(result));
    show();
}

/// The room in which it can be seen at best. One that moves is not decoded again, nor is one that was decoded again in
/// vain.
PictureBounds ViewerController::finestImage() const
{
    auto const isFinal = !picture->furtherFrames.empty() || (isRefined && !underWay);
    return isFinal ? PictureBounds{.width = picture->width, .height = picture->height}
                   : PictureBounds::ofWhole(picture->wholeWidth, picture->wholeHeight);
}

/// An image fills its room and is moved and scaled by its view.
bool ViewerController::performOnImage(ViewerAction action)
{
    switch (action) {
    case ViewerAction::close:
    case ViewerAction::showText:
    case ViewerAction::showHex:
    case ViewerAction::showImage:
        return false;
    default:
        if (display)
            display->performInWindow(action);
        return true;
    }
}

} // namespace tw
