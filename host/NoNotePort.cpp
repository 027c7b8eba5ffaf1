#include "host/NotePort.h"

namespace velotrine {

std::unique_ptr<NotePort> systemNotePort()
{
    return nullptr;
}

} // namespace velotrine
