-- ardour7-lua session.lua MODE DIR FORMAT PLUGIN_ID OUT_NAME [PARAM VALUE]
-- MODE "create": a new session with a MIDI track, the phrase generator and the plug-in, an export,
-- then (with PARAM) the parameter set, a second export and the session saved.
-- MODE "reopen": the saved session loaded again and exported.
local mode, dir, format, id, out, param, value = table.unpack (arg)
AudioEngine:set_backend ("None (Dummy)", "", "")
AudioEngine:set_sample_rate (48000)
AudioEngine:set_buffer_size (512)
AudioEngine:start (false)

local function export (s, name)
	local e = s:simple_export ()
	e:set_folder (dir .. "/out")
	e:set_name (name)
	e:set_range (0, 96000)
	assert (e:set_preset ("6f3c2b1e-0d1a-4c5e-9b7a-5a4d3c2b1a00"), "no float export preset")
	assert (e:check_outputs (), "nothing to export")
	assert (e:run_export (), "export failed")
end

if mode == "create" then
	local s = create_session (dir .. "/session", "session", 48000)
	assert (s, "no session")
	local tl = s:new_midi_track (ARDOUR.ChanCount (ARDOUR.DataType ("midi"), 1), ARDOUR.ChanCount (ARDOUR.DataType ("audio"), 2),
		true, ARDOUR.PluginInfo (), nil, nil, 1, "synth", ARDOUR.PresentationInfo.max_order, ARDOUR.TrackMode.Normal, true)
	local track = tl:front ()
	local gen = ARDOUR.LuaAPI.new_luaproc (s, "Morvane Test Phrase")
	local kind = format == "vst3" and ARDOUR.PluginType.VST3 or ARDOUR.PluginType.LV2
	local p = ARDOUR.LuaAPI.new_plugin (s, id, kind, "")
	assert (not gen:isnil () and not p:isnil (), "the generator or the plug-in did not load")
	track:add_processor_by_index (gen, 0, nil, true)
	track:add_processor_by_index (p, 1, nil, true)
	export (s, out)
	if param then
		assert (ARDOUR.LuaAPI.set_processor_param (p, tonumber (param), tonumber (value)), "cannot set the parameter")
		export (s, out .. "-changed")
	end
	assert (s:save_state ("", false, false, false, false, false) == 0, "the session was not saved")
	-- ardour7-lua can crash on its way out: this line tells the check the session is whole.
	print ("morvane-check: saved")
else
	local s = load_session (dir .. "/session", "session")
	assert (s, "cannot reopen the session")
	export (s, out)
end
close_session ()
