// Which of the toolkit's platforms can be started. Inside the platform only.
#pragma once

#include <QByteArray>

namespace Halyon
{
// The first platform that answers, as the toolkit's option takes it: of those that the environment names, else of the
// displays that it points at. X11 before Wayland, since more of the calls work there. When none answers, the one that
// shows nothing; empty when even that is not installed. Throws std::bad_alloc.
QByteArray UsablePlatform();
} // namespace Halyon
