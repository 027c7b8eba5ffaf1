-- Creates a session with the instrument on a track, and saves it as it is.

local function create(folder, format)
  local session = assert(create_session(folder, "session", 48000))
  add_instrument(session, format)
  session:save_state("")
end

arg.answers = arg[1]
dofile(arg[2] .. "/session.lua")
create(arg[3], arg[4])
finish()
