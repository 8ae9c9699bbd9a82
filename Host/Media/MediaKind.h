// What a path names: one image, a numbered sequence of images, or a video.
#pragma once

namespace Quillmere::Velmira {

enum class MediaKind { Image, Sequence, Video };

}  // namespace Quillmere::Velmira
