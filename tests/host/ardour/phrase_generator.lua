ardour {
	["type"]    = "dsp",
	name        = "Morvane Test Phrase",
	category    = "Utility",
	license     = "MIT",
	author      = "Morvane",
	description = [[Plays the host check's phrase from the transport position, so that an export
renders the same notes every time without a MIDI region.]]
}

function dsp_ioconfig ()
	return { { midi_in = 1, midi_out = 1, audio_in = 0, audio_out = 0 }, }
end

-- sample at 48 kHz, status, note, velocity: the same notes as the check's morvane-render --note list
local events = {
	{ 4800, 0x90, 36, 110 }, { 28800, 0x80, 36, 0 },
	{ 33600, 0x90, 43, 90 }, { 52800, 0x80, 43, 0 },
	{ 57600, 0x90, 38, 127 }, { 81600, 0x80, 38, 0 },
}

function dsp_run (_, _, n_samples)
	if not Session:transport_rolling () then return end
	local pos = Session:transport_sample ()
	local cnt = 1
	for _, e in ipairs (events) do
		if e[1] >= pos and e[1] < pos + n_samples then
			-- event times are counted from 1
			midiout[cnt] = { time = e[1] - pos + 1, data = { e[2], e[3], e[4] } }
			cnt = cnt + 1
		end
	end
end
