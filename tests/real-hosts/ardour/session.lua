-- What all scripts need: the plug-in's controls, its loudness, and a clean end. Objects of the host's that a
-- script still holds when the session closes are freed too late; so the scripts keep them in functions.

local answers = assert(io.open(arg.answers, "w"))

--- One fact for the test: words, separated by tabs.
function answer(...)
  answers:write(table.concat({...}, "\t"), "\n")
  answers:flush()
end

local function find(format)
  for plugin in ARDOUR.LuaAPI.list_plugins():iter() do
    if plugin.name == "Velotrine" and plugin.type == ARDOUR.PluginType[format] then
      answer("found", plugin.creator, tostring(plugin:is_instrument()), plugin.n_inputs:n_audio(),
             plugin.n_outputs:n_audio())
      return plugin.unique_id
    end
  end
  error("the plug-in is not found")
end

--- A track with the instrument on it; or, where the format is none, with nothing on it.
function add_instrument(session, format)
  local first_place = ARDOUR.PresentationInfo.max_order
  local tracks = session:new_audio_track(1, 2, nil, 1, "Instrument", first_place, ARDOUR.TrackMode.Normal, true, false)
  if format == "none" then
    return
  end
  local name = format == "LV2" and find(format) or find(format) and "Velotrine"
  local processor = ARDOUR.LuaAPI.new_plugin(session, name, ARDOUR.PluginType[format], "")
  assert(not processor:isnil(), "the plug-in cannot be made")
  assert(tracks:front():add_processor_by_index(processor, 0, nil, true) == 0, "it cannot be put on a track")
end

--- The host starts early by the device's latency, and so would the instrument; without a device, an export begins
-- with the instrument's first frame.
function disconnect_devices(session)
  for _, io in ipairs {session:route_by_name("Instrument"):input(), session:master_out():output()} do
    for port = 0, io:n_ports():n_audio() - 1 do
      io:nth(port):disconnect_all()
    end
  end
end

function instrument(session)
  return session:route_by_name("Instrument"):nth_plugin(0)
end

--- Calls with index, name, range and value of each control that a musician can automate.
function each_control(processor, call)
  if processor:isnil() then
    return
  end
  local plugin = processor:to_insert():plugin(0)
  for index = 0, plugin:parameter_count() - 1 do
    local name = plugin:parameter_label(index)
    -- VST3 hosts get a switch to bypass the plug-in, which is not the instrument's.
    if plugin:parameter_is_control(index) and plugin:parameter_is_input(index) and name ~= "Bypass" then
      local _, found = plugin:get_parameter_descriptor(index, ARDOUR.ParameterDescriptor())
      call(index, name, found[2])
    end
  end
end

function answer_values(processor, when)
  each_control(processor, function(index)
    answer(when, index, string.format("%.17g", ARDOUR.LuaAPI.get_processor_param(processor, index)))
  end)
end

--- The highest peak on the track within the next seconds, in decibels.
function answer_level(session, when, seconds)
  local meter = session:route_by_name("Instrument"):peak_meter()
  meter:reset_max()
  sleep(seconds)
  -- The meters of notes come first.
  local first_of_sound = session:route_by_name("Instrument"):n_outputs():n_midi()
  answer("level", when, meter:meter_level(first_of_sound, ARDOUR.MeterType.MeterMaxPeak))
end

--- A note rings for little more than a second.
function wait_until_the_last_note_has_ended()
  sleep(2)
end

function set_tempo(quarters_per_minute)
  local map = Temporal.TempoMap.fetch_writable()
  map:set_tempo(Temporal.Tempo(quarters_per_minute, quarters_per_minute, 4), Temporal.timepos_t(0))
  Temporal.TempoMap.update(map)
end

function finish()
  collectgarbage()
  collectgarbage()
  close_session()
  quit()
end
