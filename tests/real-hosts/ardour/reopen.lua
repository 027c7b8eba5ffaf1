-- Opens the session again, saves it under another name, and exports it faster than real time.

local exact_floats_preset = "5f3a2c1e-8d47-4b6f-9a30-6c1d2e7b8f90"

--- A control that jumps from one value to another at a frame.
local function automate(processor, index, first, later, frame)
  local _, list = ARDOUR.LuaAPI.plugin_automation(processor, index)
  list:set_interpolation(Evoral.InterpolationStyle.Discrete)
  list:add(Temporal.timepos_t(0), first, false, true)
  list:add(Temporal.timepos_t(frame), later, false, true)
  local parameter = Evoral.Parameter(ARDOUR.AutomationType.PluginAutomation, 0, index)
  local control = processor:to_automatable():automation_control(parameter, false)
  control:set_automation_state(ARDOUR.AutoState.Play)
end

local function export(session, folder, name, frames)
  local exporter = session:simple_export()
  assert(exporter:set_preset(exact_floats_preset), "the export preset is missing")
  exporter:set_name(name)
  exporter:set_folder(folder)
  exporter:set_range(0, frames)
  local start = ARDOUR.LuaAPI.monotonic_time()
  assert(exporter:run_export(), "the export fails")
  answer("seconds", (ARDOUR.LuaAPI.monotonic_time() - start) / 1e6)
end

local function reopen(folder, name, tempo, frames, changes)
  local session = assert(load_session(folder, "session"))
  local processor = instrument(session)
  answer_values(processor, "reopened")
  set_tempo(tempo)
  for index, first, later, frame in changes:gmatch("(%d+):([%d.]+):([%d.]+):(%d+)") do
    automate(processor, tonumber(index), tonumber(first), tonumber(later), tonumber(frame))
  end
  session:save_state(name)
  export(session, folder, name, frames)
  wait_until_the_last_note_has_ended()
  answer_level(session, "after the export", 0.3)
end

arg.answers = arg[1]
dofile(arg[2] .. "/session.lua")
reopen(arg[3], arg[4], tonumber(arg[5]), tonumber(arg[6]), arg[7] or "")
finish()
