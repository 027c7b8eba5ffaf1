-- Makes a session with the instrument on a track, for the host's own window to open.

local function compose(folder, format)
  local session = assert(create_session(folder, "song", 48000))
  add_instrument(session, format)
  session:save_state("")
end

arg.answers = arg[1]
dofile(arg[2] .. "/song.lua")
compose(arg[3], arg[4])
finish()
