-- Plays the instrument at volume 0, records its notes on a MIDI track, and exports the recording.

local function connect_notes(session)
  local one = ARDOUR.ChanCount(ARDOUR.DataType("midi"), 1)
  local last_place = ARDOUR.PresentationInfo.max_order
  local tracks = session:new_midi_track(one, one, true, ARDOUR.PluginInfo(), nil, nil, 1, "Notes", last_place,
                                        ARDOUR.TrackMode.Normal, true)
  local track = tracks:front()
  local from, to = session:route_by_name("Instrument"):output():midi(0), track:input():midi(0)
  to:disconnect_all()
  assert(from:connect(to:name()) == 0, "the notes cannot be connected")
  return track
end

local function record(folder, format, tempo, seconds)
  local session = assert(create_session(folder, "session", 48000))
  add_instrument(session, format)
  disconnect_devices(session)
  local volume = 7
  ARDOUR.LuaAPI.set_processor_param(instrument(session), volume, 0)
  set_tempo(tempo)
  local track = connect_notes(session)
  track:rec_enable_control():set_value(1, PBD.GroupControlDisposition.NoGroup)
  session:maybe_enable_record(false)
  session:request_roll(ARDOUR.TransportRequestSource.TRS_UI)
  answer_level(session, "recording", seconds)
  session:request_stop(false, false, ARDOUR.TransportRequestSource.TRS_UI)
  wait_until_the_last_note_has_ended()
  session:save_state("") -- which writes the recording as it will stay
  for region in track:playlist():region_list():iter() do
    assert(region:to_midiregion():do_export(folder .. "/exported.mid"), "the export fails")
  end
end

arg.answers = arg[1]
dofile(arg[2] .. "/session.lua")
record(arg[3], arg[4], tonumber(arg[5]), tonumber(arg[6]))
finish()
