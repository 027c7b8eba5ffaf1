-- Makes a session with the instrument on a track, plays it, and saves it.

local function set_controls(processor, values)
  for index, value in values:gmatch("(%d+):([%d.]+)") do
    ARDOUR.LuaAPI.set_processor_param(processor, tonumber(index), tonumber(value))
  end
end

local function play(session, tempo)
  set_tempo(tempo)
  answer_level(session, "before playing at " .. tempo, 0.3)
  session:request_roll(ARDOUR.TransportRequestSource.TRS_UI)
  answer_level(session, "playing at " .. tempo, 1.5)
  answer("rolled", tempo, tostring(session:transport_rolling()), session:transport_sample())
  session:request_stop(false, false, ARDOUR.TransportRequestSource.TRS_UI)
  wait_until_the_last_note_has_ended()
  answer_level(session, "after playing at " .. tempo, 0.3)
  session:goto_start(false)
end

local function compose(folder, format, values)
  local session = assert(create_session(folder, "session", 48000))
  add_instrument(session, format)
  disconnect_devices(session)
  local processor = instrument(session)
  each_control(processor, function(index, name, range)
    local value = ARDOUR.LuaAPI.get_processor_param(processor, index)
    answer("control", index, name, range.lower, range.upper, value)
  end)
  set_controls(processor, values)
  play(session, 90)
  play(session, 140)
  answer_values(processor, "saved")
  session:save_state("")
end

arg.answers = arg[1]
dofile(arg[2] .. "/session.lua")
compose(arg[3], arg[4], arg[5])
finish()
