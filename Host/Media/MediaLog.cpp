#include "Media/MediaLog.h"

extern "C" {
#include <libavutil/log.h>
}

namespace Quillmere::Velmira {

void MediaLog::setVerbose(bool verbose) { av_log_set_level(verbose ? AV_LOG_INFO : AV_LOG_ERROR); }

}  // namespace Quillmere::Velmira
