#!/usr/bin/env python3
"""Writes the factory bank: data/presets/manifest.xml and one document per preset.

Each preset is init clean with its own changes laid over it. Levels are matched by measurement:
`morvane-render --audition DIR` prints each preset's loudness, and the `trim` column below holds the
output gain that brings it to the bank's level.
"""
import os
import sys

# The 76 ids every document names, in the order of init clean, with init clean's values.
INIT_CLEAN = [
    ("osc1Wave", 0), ("osc1DcwDepth", 0.0), ("osc1DcwAttack", 0.005), ("osc1DcwDecay", 0.5), ("osc1DcwSustain", 0.8),
    ("osc1DcwRelease", 0.3), ("osc1Level", 0.0), ("osc1PulseWidth", 0.5), ("syncOsc1", 0), ("osc2Wave", 0),
    ("osc2DcwDepth", 0.0), ("osc2DcwAttack", 0.005), ("osc2DcwDecay", 0.5), ("osc2DcwSustain", 0.8), ("osc2DcwRelease", 0.3),
    ("osc2Level", -90.0), ("osc2Detune", 0.0), ("osc2DetuneHz", 0.0), ("detuneMode", 0), ("osc2PhaseOffset", 0.0),
    ("osc2PulseWidth", 0.5), ("syncOsc2", 0), ("oscDrift", 0.0), ("subMode", 0), ("subWave", 0), ("subDcwDepth", 0.0),
    ("subLevel", -90.0), ("noiseLevel", -90.0), ("noiseColour", 0), ("noiseRouting", 0.0), ("mode", 0), ("drive", 0.0),
    ("velToDrive", 0.0), ("driveGain", 0.0), ("driveAutoMakeup", 0), ("driveMode", 0), ("filterCutoff", 20000.0),
    ("filterReso", 0.0), ("filterEnvAmount", 0.0), ("velToFilterEnv", 0.0), ("filterModel", 0), ("filterAttack", 0.005),
    ("filterDecay", 0.5), ("filterSustain", 0.6), ("filterRelease", 0.3), ("ampAttack", 0.005), ("ampDecay", 0.1),
    ("ampSustain", 1.0), ("ampRelease", 0.18), ("glideTime", 0.0), ("legato", 0), ("phaseMode", 2), ("stereoMode", 1),
    ("octave", 2), ("outputGain", -6.0), ("lfo1Rate", 1.0), ("lfo1Depth", 0.0), ("lfo1Shape", 0), ("lfo1Sync", 0),
    ("lfo1Phase", 0.0), ("mod1Source", 1), ("mod1Dest", 3), ("mod1Amount", 0.4), ("matrix1Curve", 0), ("mod2Source", 0),
    ("mod2Dest", 0), ("mod2Amount", 0.0), ("matrix2Curve", 0), ("mod3Source", 0), ("mod3Dest", 0), ("mod3Amount", 0.0),
    ("matrix3Curve", 0), ("mod4Source", 0), ("mod4Dest", 0), ("mod4Amount", 0.0), ("matrix4Curve", 0),
]
OPTIONAL = ["filterEnabled", "subRouting", "stereoWidth", "driveMix", "drivePosition", "osc1Semitone", "osc2Semitone",
            "osc1Fine", "osc2Fine", "subOctave"]

# Matrix sources and destinations by index.
VEL, KEY, WHEEL, AT, LFO, DCW1, DCW2, FENV, AENV, NRND, SRND, BEAT = range(1, 13)
CUTOFF, DRIVE, AMP, D1, D2, SUBLVL, PITCH, O1LVL, O2LVL, DET, DETHZ, PHASE2, SUBDCW, RESO, FENVAMT, DRIFT, LFORATE, \
    LFODEPTH, OUTPUT, NOISE, PW1, PW2 = range(1, 23)
SAW, SQUARE, PULSE, SINEPULSE, HALFSINE, RESSAW, RESTRI, RESTRAP, PWM, RESPULSE = range(10)
LADDER, DIODE, STATE, PHASEF = range(4)
SOFT, DIODEDRV, FOLD = range(3)


def env(prefix, a, d, s, r):
    return {prefix + "Attack": a, prefix + "Decay": d, prefix + "Sustain": s, prefix + "Release": r}


def slot(n, source, dest, amount, curve=0):
    return {f"mod{n}Source": source, f"mod{n}Dest": dest, f"mod{n}Amount": amount, f"matrix{n}Curve": curve}


def p(*parts, **kw):
    out = {}
    for part in parts:
        out.update(part)
    out.update(kw)
    return out


# Shared shapes.
PLUCK_AMP = env("amp", 0.002, 0.35, 0.0, 0.25)
SHORT_AMP = env("amp", 0.001, 0.12, 0.0, 0.08)
PAD_AMP = env("amp", 0.6, 1.0, 0.85, 1.6)
BASS_AMP = env("amp", 0.003, 0.2, 0.9, 0.12)

# (category id, name, count, [(displayName, file or None, flagship, description, settings, trim dB)])
BANK = [
    ("init", "INIT", [
        ("init clean", None, False, "single saw, open filter, fast amp · neutral starting point", {}, 0.0),
        ("init shape", None, False, "ressaw with gentle DCW decay · harmonic phase-distortion starting point",
         p(dict(osc1Wave=RESSAW, osc1DcwDepth=0.7), env("osc1Dcw", 0.005, 0.8, 0.3, 0.3)), 0.0),
        ("init reese", None, False, "two detuned saws, wide stereo, ladder open, no drive · reese starting point",
         p(dict(osc2Level=0.0, osc2Detune=18.0, stereoWidth=0.6, osc1DcwDepth=0.5, osc2DcwDepth=0.5, filterCutoff=6000.0)), 0.0),
        ("init sub", None, False, "sine sub under a soft saw, ladder low, clean · sub bass starting point",
         p(dict(subLevel=-3.0, osc1Level=-12.0, filterCutoff=900.0, octave=1)), 0.0),
    ]),
    ("bass-reese", "BASS · REESE", [
        ("reese classic", None, True, "detuned saw pair, ladder at 700 Hz, soft drive, wide stereo · rolling drum and bass reese",
         p(dict(osc1Wave=SAW, osc2Level=0.0, osc1DcwDepth=0.8, osc2DcwDepth=0.8, osc2Detune=22.0, stereoWidth=0.7,
                filterCutoff=700.0, filterReso=0.25, drive=9.0, driveAutoMakeup=1, subLevel=-9.0, octave=1, glideTime=0.04,
                oscDrift=0.3), BASS_AMP), 0.0),
        ("reese uk modern", None, False, "ressaw reese with lfo on the cutoff, diode drive, stereo · modern uk bassline",
         p(dict(osc1Wave=RESSAW, osc2Wave=RESSAW, osc2Level=-1.0, osc1DcwDepth=0.6, osc2DcwDepth=0.6, osc2Detune=30.0,
                stereoWidth=0.5, filterCutoff=900.0, filterReso=0.3, drive=12.0, driveMode=DIODEDRV, driveAutoMakeup=1,
                subLevel=-8.0, octave=1, lfo1Rate=0.5, lfo1Depth=0.6), slot(2, LFO, CUTOFF, 0.25), BASS_AMP), 0.0),
        ("formant growl", None, False, "restrapezoid reese through the state filter, fold drive, lfo sweep · growling mid bass",
         p(dict(osc1Wave=RESTRAP, osc2Wave=RESTRAP, osc2Level=-2.0, osc1DcwDepth=0.7, osc2DcwDepth=0.5, osc2Detune=14.0,
                stereoWidth=0.4, filterModel=STATE, filterCutoff=1100.0, filterReso=0.55, drive=8.0, driveMode=FOLD,
                driveAutoMakeup=1, octave=1, lfo1Rate=2.0, lfo1Depth=0.8), slot(2, LFO, D1, 0.4), slot(3, LFO, CUTOFF, 0.2),
           BASS_AMP), 0.0),
    ]),
    ("bass-sub", "BASS · SUB", [
        ("dub glacier", None, True, "sine sub with a halfsine edge, ladder low, clean, slow glide · deep dub sub that sustains",
         p(dict(osc1Wave=HALFSINE, osc1Level=-10.0, subLevel=-2.0, filterCutoff=400.0, octave=1, glideTime=0.08,
                legato=1), env("amp", 0.01, 0.3, 1.0, 0.3)), 0.0),
        ("eight oh eight", None, False, "sine sub with pitch drop, soft drive, short decay · 808 style sub kick bass",
         p(dict(osc1Level=-60.0, subLevel=0.0, drive=2.0, driveAutoMakeup=1, filterCutoff=400.0, octave=1),
           env("amp", 0.001, 1.2, 0.0, 0.4), env("filter", 0.001, 0.08, 0.0, 0.05), slot(2, FENV, PITCH, 0.15)), 0.0),
        ("dub melodic round", None, False, "sinepulse over a sine sub, ladder low, clean, glide · round melodic sub line",
         p(dict(osc1Wave=SINEPULSE, osc1Level=-8.0, osc1DcwDepth=0.3, subLevel=-3.0, filterCutoff=700.0, octave=1,
                glideTime=0.06), BASS_AMP), 0.0),
        ("sub drone", None, False, "pd sub with slow lfo on its dcw, ladder low, clean · sustain drone sub bed",
         p(dict(osc1Level=-60.0, subLevel=0.0, subMode=1, subWave=HALFSINE, subDcwDepth=0.3, filterCutoff=600.0, octave=1,
                lfo1Rate=0.2, lfo1Depth=0.5), slot(2, LFO, SUBDCW, 0.3), env("amp", 0.3, 1.0, 1.0, 1.5)), 0.0),
    ]),
    ("bass-mid", "BASS · MID", [
        ("rave supersaw", None, False, "detuned saw stack, ladder open, soft drive, wide stereo · rave mid bass and stabs",
         p(dict(osc2Level=0.0, osc2Detune=35.0, stereoWidth=0.9, osc1DcwDepth=0.9, osc2DcwDepth=0.9, filterCutoff=3500.0,
                drive=6.0, driveAutoMakeup=1, octave=1), BASS_AMP), 0.0),
        ("garage pluck", None, False, "square pluck, ladder with envelope, soft drive, short · two-step garage bass",
         p(dict(osc1Wave=SQUARE, osc1DcwDepth=0.7, filterCutoff=300.0, filterEnvAmount=36.0, filterReso=0.3, drive=6.0,
                driveAutoMakeup=1, octave=1, subLevel=-10.0), env("filter", 0.001, 0.18, 0.0, 0.1), env("amp", 0.002, 0.25, 0.0, 0.1)), 0.0),
        ("house filtered pump", None, False, "saw through the ladder with lfo on cutoff, soft drive · filtered house bass",
         p(dict(osc1DcwDepth=0.8, filterCutoff=500.0, filterReso=0.35, drive=5.0, driveAutoMakeup=1, octave=1,
                lfo1Sync=1, lfo1Rate=10.0, lfo1Depth=0.7, lfo1Shape=1), slot(2, LFO, CUTOFF, 0.35), BASS_AMP), 0.0),
        ("hoover classic", None, True, "pwm hoover with pitch glide, ladder open, soft drive, wide · classic rave hoover",
         p(dict(osc1Wave=PWM, osc2Wave=PWM, osc2Level=-2.0, osc2Detune=25.0, stereoWidth=0.8, osc1PulseWidth=0.3,
                filterCutoff=5000.0, drive=8.0, driveAutoMakeup=1, glideTime=0.12, lfo1Rate=5.0, lfo1Depth=0.5),
           slot(2, LFO, PW1, 0.4), slot(3, FENV, PITCH, -0.05), env("filter", 0.001, 0.2, 0.0, 0.1), BASS_AMP), 0.0),
    ]),
    ("bass-motion", "BASS · MOTION", [
        ("wobble lfo", None, True, "ressaw wobble, ladder swept by a synced lfo, diode drive · dubstep wobble bass",
         p(dict(osc1Wave=RESSAW, osc1DcwDepth=0.8, osc2Level=-3.0, osc2Detune=12.0, filterCutoff=250.0, filterReso=0.45,
                drive=12.0, driveMode=DIODEDRV, driveAutoMakeup=1, octave=1, lfo1Sync=1, lfo1Rate=8.0, lfo1Depth=1.0),
           slot(2, LFO, CUTOFF, 0.6), slot(3, LFO, D1, 0.3), BASS_AMP), 0.0),
        ("clockstep glitch", None, False, "square bass with s&h lfo on cutoff, diode filter, soft drive · stepped glitch bass",
         p(dict(osc1Wave=SQUARE, osc1DcwDepth=0.6, filterModel=DIODE, filterCutoff=600.0, filterReso=0.4, drive=6.0,
                driveAutoMakeup=1, octave=1, lfo1Shape=3, lfo1Sync=1, lfo1Rate=12.0, lfo1Depth=1.0),
           slot(2, LFO, CUTOFF, 0.4), BASS_AMP), 0.0),
        ("chip sid pulse", None, False, "pulse with pwm lfo, ladder open, clean · chiptune sid bass with lfo motion",
         p(dict(osc1Wave=PWM, osc1PulseWidth=0.25, filterCutoff=8000.0, octave=1, lfo1Rate=3.0, lfo1Depth=0.6,
                lfo1Shape=1), slot(2, LFO, PW1, 0.3), env("amp", 0.001, 0.2, 0.6, 0.05)), 0.0),
        ("industrial fold", None, False, "saw into fold drive with lfo on the drive, ladder low · industrial moving bass",
         p(dict(osc1DcwDepth=0.5, filterCutoff=1200.0, filterReso=0.2, drive=14.0, driveMode=FOLD, driveAutoMakeup=1,
                octave=1, lfo1Rate=1.5, lfo1Depth=0.8), slot(2, LFO, DRIVE, 0.3), BASS_AMP), 0.0),
    ]),
    ("bass-resonant", "BASS · RESONANT", [
        ("acid diode squelch", None, True, "saw through the diode filter, high resonance, envelope, diode drive, glide · acid 303 squelch",
         p(dict(osc1DcwDepth=0.9, filterModel=DIODE, filterCutoff=250.0, filterReso=0.8, filterEnvAmount=40.0,
                velToFilterEnv=0.6, drive=10.0, driveMode=DIODEDRV, driveAutoMakeup=1, glideTime=0.06, legato=1),
           env("filter", 0.001, 0.22, 0.1, 0.1), env("amp", 0.002, 0.3, 0.7, 0.08)), 0.0),
        ("acid phase scream", None, False, "square through the phase filter, resonance, soft drive, lfo · screaming acid line",
         p(dict(osc1Wave=SQUARE, osc1DcwDepth=0.8, filterModel=PHASEF, filterCutoff=700.0, filterReso=0.7,
                filterEnvAmount=30.0, drive=9.0, driveAutoMakeup=1, glideTime=0.05, lfo1Rate=4.0, lfo1Depth=0.5),
           slot(2, LFO, CUTOFF, 0.15), env("filter", 0.001, 0.25, 0.2, 0.1), BASS_AMP), 0.0),
    ]),
    ("leads", "LEADS", [
        ("widescreen lead", None, True, "detuned saws, ladder open, soft drive, wide stereo, glide · big sustain lead",
         p(dict(osc2Level=0.0, osc2Detune=14.0, stereoWidth=0.8, osc1DcwDepth=0.9, osc2DcwDepth=0.9, filterCutoff=7000.0,
                drive=4.0, driveAutoMakeup=1, glideTime=0.05, octave=3, lfo1Rate=5.5, lfo1Depth=0.15),
           slot(2, WHEEL, PITCH, 0.02), env("amp", 0.01, 0.3, 0.9, 0.35)), 0.0),
        ("ladder solo", None, False, "square through the ladder, resonance, envelope, soft drive, glide · mono solo lead that sustains",
         p(dict(osc1Wave=SQUARE, osc1DcwDepth=0.8, filterCutoff=1500.0, filterReso=0.5, filterEnvAmount=24.0, drive=5.0,
                driveAutoMakeup=1, glideTime=0.04, octave=3), env("filter", 0.002, 0.4, 0.3, 0.2), env("amp", 0.005, 0.3, 0.85, 0.25)), 0.0),
        ("sync sweep", None, False, "hard sync saw with envelope on dcw, ladder open, soft drive · sweeping sync lead that sustains",
         p(dict(syncOsc1=1, osc2Level=-60.0, osc1DcwDepth=1.0, osc1Semitone=7, filterCutoff=9000.0, drive=4.0,
                driveAutoMakeup=1, octave=3), env("osc1Dcw", 0.001, 0.8, 0.2, 0.3), env("amp", 0.005, 0.3, 0.85, 0.25)), 0.0),
        ("whistle flute", None, False, "sine with breath noise, ladder open, clean, slow lfo vibrato · airy flute lead",
         p(dict(osc1Wave=HALFSINE, noiseLevel=-36.0, noiseColour=1, filterCutoff=6000.0, octave=4, lfo1Rate=5.0,
                lfo1Depth=0.2), slot(2, LFO, PITCH, 0.005), env("amp", 0.06, 0.3, 0.9, 0.3)), 0.0),
        ("brass lead", None, False, "saw with filter envelope swell, ladder, soft drive · brassy sustain lead",
         p(dict(osc2Level=-4.0, osc2Detune=8.0, osc1DcwDepth=0.9, osc2DcwDepth=0.9, filterCutoff=700.0, filterEnvAmount=30.0,
                filterReso=0.15, drive=4.0, driveAutoMakeup=1, octave=3), env("filter", 0.08, 0.5, 0.4, 0.3),
           env("amp", 0.04, 0.3, 0.9, 0.3)), 0.0),
        ("hoover lead high", None, False, "pwm pair with pitch glide, ladder open, soft drive, wide · high hoover lead",
         p(dict(osc1Wave=PWM, osc2Wave=PWM, osc2Level=-2.0, osc2Detune=20.0, stereoWidth=0.7, filterCutoff=6000.0, drive=6.0,
                driveAutoMakeup=1, glideTime=0.1, octave=3, lfo1Rate=4.0, lfo1Depth=0.4), slot(2, LFO, PW1, 0.3),
           env("amp", 0.005, 0.3, 0.85, 0.3)), 0.0),
        ("pd resonant", None, True, "resonant ressaw with dcw envelope, ladder open, clean · phase-distortion resonant sustain lead",
         p(dict(osc1Wave=RESSAW, osc1DcwDepth=1.0, filterCutoff=12000.0, octave=3), env("osc1Dcw", 0.002, 0.6, 0.35, 0.3),
           env("amp", 0.005, 0.3, 0.85, 0.3)), 0.0),
        ("acid lead 303", None, False, "saw through the diode filter, resonance, envelope, diode drive, glide · acid lead line",
         p(dict(osc1DcwDepth=0.9, filterModel=DIODE, filterCutoff=400.0, filterReso=0.75, filterEnvAmount=36.0, drive=8.0,
                driveMode=DIODEDRV, driveAutoMakeup=1, glideTime=0.05, legato=1, octave=3),
           env("filter", 0.001, 0.2, 0.15, 0.1), env("amp", 0.002, 0.3, 0.8, 0.1)), 0.0),
        ("cosmo pd", None, False, "restriangle with lfo on dcw, state filter, soft drive · cosmic pd lead",
         p(dict(osc1Wave=RESTRI, osc1DcwDepth=0.7, filterModel=STATE, filterCutoff=5000.0, filterReso=0.3, drive=3.0,
                driveAutoMakeup=1, octave=3, lfo1Rate=0.7, lfo1Depth=0.7), slot(2, LFO, D1, 0.3), env("amp", 0.01, 0.3, 0.85, 0.4)), 0.0),
        ("harmonica pd", None, False, "respulse with breath noise, ladder, clean, lfo vibrato · reedy harmonica lead",
         p(dict(osc1Wave=RESPULSE, osc1DcwDepth=0.5, noiseLevel=-40.0, filterCutoff=3500.0, octave=3, lfo1Rate=5.5,
                lfo1Depth=0.3), slot(2, LFO, PITCH, 0.004), env("amp", 0.04, 0.3, 0.85, 0.2)), 0.0),
        ("chip lead", None, False, "square, ladder open, clean, sustain · chiptune square lead",
         p(dict(osc1Wave=SQUARE, osc1DcwDepth=1.0, filterCutoff=10000.0, octave=3), env("amp", 0.001, 0.1, 0.7, 0.05)), 0.0),
        ("theremin glide", None, False, "sine with long glide and lfo vibrato, ladder open, clean · theremin glide lead",
         p(dict(osc1Wave=SAW, osc1DcwDepth=0.0, glideTime=0.35, legato=1, filterCutoff=8000.0, octave=3, lfo1Rate=6.0,
                lfo1Depth=0.5), slot(2, LFO, PITCH, 0.006), env("amp", 0.08, 0.3, 0.9, 0.4)), 0.0),
    ]),
    ("plucks", "PLUCKS", [
        ("tine ep", None, True, "sinepulse with dcw decay, ladder, clean, pluck · electric piano tine",
         p(dict(osc1Wave=SINEPULSE, osc1DcwDepth=0.6, filterCutoff=6000.0, octave=3), env("osc1Dcw", 0.001, 0.4, 0.0, 0.2),
           env("amp", 0.002, 1.5, 0.0, 0.4)), 0.0),
        ("ring ep metallic", None, False, "ring mode pair, ladder, clean, pluck · metallic ring ep",
         p(dict(mode=1, osc2Level=0.0, osc2Semitone=19, osc1DcwDepth=0.2, filterCutoff=7000.0, octave=3),
           env("amp", 0.002, 1.2, 0.0, 0.4)), 0.0),
        ("vibraphone", None, False, "halfsine with lfo tremolo, ladder, clean, pluck · soft vibraphone",
         p(dict(osc1Wave=HALFSINE, osc1DcwDepth=0.2, filterCutoff=5000.0, octave=3, lfo1Rate=5.0, lfo1Depth=0.4),
           slot(2, LFO, AMP, 0.3), env("amp", 0.002, 0.9, 0.0, 0.6)), 0.0),
        ("harpsichord", None, False, "pulse with dcw decay, ladder open, clean, short pluck · plucked harpsichord",
         p(dict(osc1Wave=PULSE, osc1DcwDepth=0.8, filterCutoff=9000.0, octave=3), env("osc1Dcw", 0.001, 0.3, 0.1, 0.2),
           env("amp", 0.001, 0.8, 0.0, 0.3)), 0.0),
        ("marimba wood", None, False, "sinepulse with fast dcw decay, ladder, clean, short pluck · wooden marimba",
         p(dict(osc1Wave=SINEPULSE, osc1DcwDepth=0.5, filterCutoff=4000.0, octave=3), env("osc1Dcw", 0.001, 0.08, 0.0, 0.1),
           env("amp", 0.001, 0.5, 0.0, 0.2)), 0.0),
        ("kalimba pd", None, False, "restriangle with dcw decay, ladder, clean, pluck · thumb piano pd",
         p(dict(osc1Wave=RESTRI, osc1DcwDepth=0.4, filterCutoff=6000.0, octave=3), env("osc1Dcw", 0.001, 0.15, 0.0, 0.1),
           env("amp", 0.001, 0.9, 0.0, 0.3)), 0.0),
        ("plucked guitar pd", None, False, "saw with filter envelope, ladder, soft drive, pluck · plucked string pd",
         p(dict(osc1DcwDepth=0.7, filterCutoff=500.0, filterEnvAmount=40.0, drive=3.0, driveAutoMakeup=1, octave=2),
           env("filter", 0.001, 0.3, 0.0, 0.2), env("amp", 0.001, 1.0, 0.0, 0.3)), 0.0),
        ("synth clav", None, False, "pulse through the state filter, envelope, soft drive, short pluck · funky clav",
         p(dict(osc1Wave=PULSE, osc1DcwDepth=0.6, filterModel=STATE, filterCutoff=800.0, filterEnvAmount=36.0, filterReso=0.3,
                drive=4.0, driveAutoMakeup=1, octave=3), env("filter", 0.001, 0.12, 0.0, 0.1), env("amp", 0.001, 0.35, 0.0, 0.1)), 0.0),
        ("low mallet", "mallet_low.xml", False, "halfsine with sub, ladder low, clean, pluck · low mallet bass",
         p(dict(osc1Wave=HALFSINE, osc1DcwDepth=0.3, subLevel=-8.0, filterCutoff=2500.0, octave=1),
           env("osc1Dcw", 0.001, 0.1, 0.0, 0.1), env("amp", 0.001, 0.7, 0.0, 0.3)), 0.0),
        ("cosmic bell", "bell_cosmic.xml", True, "ring mode bell with lfo shimmer, ladder open, clean, pluck · cosmic bell",
         p(dict(mode=1, osc2Level=0.0, osc2Semitone=12, osc2Fine=7, osc1Wave=HALFSINE, filterCutoff=9000.0, octave=3,
                lfo1Rate=0.3, lfo1Depth=0.5, stereoWidth=0.4, osc2Detune=4.0), slot(2, LFO, D2, 0.3),
           env("amp", 0.001, 1.0, 0.0, 1.2)), 0.0),
    ]),
    ("textures", "TEXTURES · PADS", [
        ("pwm sequencer", None, False, "pwm with lfo on width, ladder, soft drive, short · pulsing sequence",
         p(dict(osc1Wave=PWM, osc1PulseWidth=0.3, filterCutoff=2000.0, filterReso=0.3, drive=3.0, driveAutoMakeup=1,
                octave=2, lfo1Rate=0.4, lfo1Depth=0.7), slot(2, LFO, PW1, 0.4), env("amp", 0.001, 0.25, 0.0, 0.15)), 0.0),
        ("tape warble", None, True, "saw pair with drift and smooth random on pitch, ladder low, clean · warbling tape pad",
         p(dict(osc2Level=-2.0, osc2Detune=8.0, oscDrift=0.6, stereoWidth=0.5, filterCutoff=2500.0, octave=3),
           slot(2, SRND, PITCH, 0.006), PAD_AMP), 0.0),
        ("horror ringmod", None, False, "ring mode with lfo on detune, state filter, fold drive · horror ringmod drone",
         p(dict(mode=1, osc2Level=0.0, osc2Semitone=6, osc2Fine=13, filterModel=STATE, filterCutoff=3000.0, filterReso=0.4,
                drive=6.0, driveMode=FOLD, driveAutoMakeup=1, lfo1Rate=0.3, lfo1Depth=0.8), slot(2, LFO, DET, 0.5), PAD_AMP), 0.0),
        ("pure drone", None, True, "sine pair with slow beat, ladder low, clean, wide · pure sustain drone",
         p(dict(osc1Wave=HALFSINE, osc2Wave=HALFSINE, osc2Level=0.0, osc2DetuneHz=0.6, detuneMode=1, stereoWidth=1.0,
                subLevel=-12.0, filterCutoff=3000.0, octave=2), env("amp", 1.0, 1.0, 1.0, 2.5)), 0.0),
        ("scifi dcw morph", None, False, "ressaw with lfo on dcw, phase filter, clean · sci-fi morphing texture",
         p(dict(osc1Wave=RESSAW, osc2Wave=RESPULSE, osc2Level=-4.0, osc1DcwDepth=0.5, osc2DcwDepth=0.5, filterModel=PHASEF,
                filterCutoff=1200.0, filterReso=0.5, lfo1Rate=0.15, lfo1Depth=0.8, octave=3), slot(2, LFO, D1, 0.5),
           slot(3, LFO, D2, -0.5), PAD_AMP), 0.0),
        ("choir pd", None, False, "restrapezoid pair with vibrato, state filter, clean, wide · pd choir pad",
         p(dict(osc1Wave=RESTRAP, osc2Wave=RESTRAP, osc2Level=-1.0, osc2Detune=10.0, stereoWidth=0.7, osc1DcwDepth=0.4,
                osc2DcwDepth=0.4, filterModel=STATE, filterCutoff=2200.0, filterReso=0.2, octave=3, lfo1Rate=5.0,
                lfo1Depth=0.2), slot(2, LFO, PITCH, 0.003), PAD_AMP), 0.0),
        ("wide stereo drone", None, False, "saw pair at full spread, ladder low, clean · wide stereo drone",
         p(dict(osc2Level=0.0, osc2Detune=12.0, stereoWidth=1.0, filterCutoff=1800.0, octave=2, oscDrift=0.3),
           env("amp", 1.2, 1.0, 1.0, 2.5)), 0.0),
        ("glass crystal", None, False, "sinepulse with lfo on dcw, ladder open, clean, wide · glassy crystal pad",
         p(dict(osc1Wave=SINEPULSE, osc2Wave=SINEPULSE, osc2Level=-3.0, osc2Semitone=12, osc2Detune=5.0, stereoWidth=0.6,
                osc1DcwDepth=0.4, filterCutoff=10000.0, octave=3, lfo1Rate=0.5, lfo1Depth=0.6), slot(2, LFO, D1, 0.3), PAD_AMP), 0.0),
        ("dark atmosphere", None, False, "saw pair with brown noise, ladder low, soft drive · dark drone atmosphere",
         p(dict(osc2Level=-3.0, osc2Detune=20.0, stereoWidth=0.6, noiseLevel=-30.0, noiseColour=2, filterCutoff=500.0,
                filterReso=0.3, drive=4.0, driveAutoMakeup=1, octave=2, lfo1Rate=0.1, lfo1Depth=0.6),
           slot(2, LFO, CUTOFF, 0.2), env("amp", 1.5, 1.0, 1.0, 3.0)), 0.0),
        ("sustained acid pad", "sustain_acid_pad.xml", False, "saw through the diode filter with lfo, resonance, diode drive · sustain acid pad",
         p(dict(osc2Level=-3.0, osc2Semitone=12, osc2Detune=6.0, filterModel=DIODE, filterCutoff=600.0, filterReso=0.65, drive=8.0,
                driveMode=DIODEDRV, driveAutoMakeup=1, octave=2, lfo1Rate=0.25, lfo1Depth=0.5), slot(2, LFO, CUTOFF, 0.12), PAD_AMP), 0.0),
        ("vapor phase pad", None, False, "saw pair through the phase filter with lfo, clean, wide · vaporwave phase pad",
         p(dict(osc2Level=-2.0, osc2Detune=9.0, stereoWidth=0.8, filterModel=PHASEF, filterCutoff=900.0, filterReso=0.4,
                octave=3, lfo1Rate=0.2, lfo1Depth=0.8), slot(2, LFO, CUTOFF, 0.4), PAD_AMP), 0.0),
        ("ambient glide", None, False, "halfsine pair with long glide, ladder, clean, wide · ambient glide pad",
         p(dict(osc1Wave=HALFSINE, osc2Wave=SAW, osc2Level=-6.0, osc2Detune=7.0, stereoWidth=0.6, osc2DcwDepth=0.4,
                filterCutoff=3000.0, glideTime=0.5, legato=1, octave=3), PAD_AMP), 0.0),
        ("dissonant minor", "dissonant_minor_pad.xml", False, "saw pair a minor second apart, state filter, soft drive · dissonant drone pad",
         p(dict(osc2Level=-1.0, osc2Semitone=1, stereoWidth=0.5, filterModel=STATE, filterCutoff=1500.0, filterReso=0.25,
                drive=3.0, driveAutoMakeup=1, octave=2), PAD_AMP), 0.0),
    ]),
    ("percussion", "PERCUSSION", [
        ("snare pd", None, True, "white noise over a pitch-dropping halfsine, ladder, soft drive, short · pd snare",
         p(dict(osc1Wave=HALFSINE, osc1Level=-6.0, noiseLevel=-3.0, noiseColour=0, noiseRouting=0.5, filterCutoff=7000.0,
                drive=4.0, driveAutoMakeup=1, octave=3), env("filter", 0.001, 0.05, 0.0, 0.05), slot(2, FENV, PITCH, 0.2),
           env("amp", 0.001, 0.18, 0.0, 0.1)), 0.0),
        ("hihat white", None, False, "white noise through the state filter, clean, short · closed hihat",
         p(dict(osc1Level=-60.0, noiseLevel=0.0, filterModel=STATE, filterCutoff=12000.0, filterReso=0.3, octave=3),
           env("amp", 0.001, 0.06, 0.0, 0.04)), 0.0),
        ("pitched perc", None, False, "sinepulse with pitch envelope, ladder, clean, short · pitched percussion",
         p(dict(osc1Wave=SINEPULSE, osc1DcwDepth=0.3, filterCutoff=5000.0, octave=2), env("filter", 0.001, 0.06, 0.0, 0.05),
           slot(2, FENV, PITCH, 0.3), env("amp", 0.001, 0.3, 0.0, 0.1)), 0.0),
        ("tom drop", None, False, "sine with a falling pitch envelope, ladder, soft drive, short · tom drop",
         p(dict(osc1Level=-60.0, subLevel=0.0, drive=4.0, driveAutoMakeup=1, filterCutoff=3000.0, octave=2),
           env("filter", 0.001, 0.25, 0.0, 0.1), slot(2, FENV, PITCH, 0.3), env("amp", 0.001, 0.5, 0.0, 0.2)), 0.0),
    ]),
    ("fx", "FX", [
        ("riser tension", None, False, "saw and white noise rising with a slow filter envelope, ladder, soft drive · tension riser",
         p(dict(osc2Level=-3.0, osc2Detune=25.0, noiseLevel=-12.0, filterCutoff=200.0, filterEnvAmount=48.0, drive=4.0,
                driveAutoMakeup=1, stereoWidth=0.7), env("filter", 4.0, 1.0, 1.0, 0.5), slot(2, FENV, PITCH, 0.25),
           env("amp", 2.0, 1.0, 1.0, 0.8)), 0.0),
        ("down sweep", None, False, "saw with a falling pitch envelope, ladder, soft drive, short · down sweep",
         p(dict(osc1DcwDepth=0.8, filterCutoff=4000.0, drive=5.0, driveAutoMakeup=1, octave=3),
           env("filter", 0.001, 1.0, 0.0, 0.5), slot(2, FENV, PITCH, 0.5), env("amp", 0.001, 0.9, 0.0, 0.5)), 0.0),
        ("ringmod clang", None, False, "ring mode with a metallic interval, state filter, fold drive, short · ringmod clang",
         p(dict(mode=1, osc2Level=0.0, osc2Semitone=11, osc2Fine=31, filterModel=STATE, filterCutoff=4000.0, filterReso=0.4,
                drive=8.0, driveMode=FOLD, driveAutoMakeup=1, octave=3), env("amp", 0.001, 0.6, 0.0, 0.3)), 0.0),
        ("bass impact", None, True, "sub with a pitch drop and brown noise, ladder, soft drive · cinematic bass impact",
         p(dict(osc1Level=-8.0, subLevel=0.0, noiseLevel=-18.0, noiseColour=2, drive=8.0, driveAutoMakeup=1, filterCutoff=1500.0,
                octave=1), env("filter", 0.001, 0.6, 0.0, 0.4), slot(2, FENV, PITCH, 0.35), env("amp", 0.001, 2.0, 0.0, 1.0)), 0.0),
        ("wind atmosphere", "wind_atmos.xml", False, "pink noise with lfo on cutoff, state filter, clean · wind atmosphere",
         p(dict(osc1Level=-60.0, noiseLevel=0.0, noiseColour=1, filterModel=STATE, filterCutoff=800.0, filterReso=0.5, driveGain=12.0,
                lfo1Rate=0.15, lfo1Depth=1.0, stereoWidth=0.5), slot(2, LFO, CUTOFF, 0.4), slot(3, SRND, CUTOFF, 0.2),
           env("amp", 1.0, 1.0, 1.0, 2.0)), 0.0),
        ("glitch chaos", None, False, "square with s&h lfo on pitch and cutoff, diode filter, fold drive · random glitch chaos",
         p(dict(osc1Wave=SQUARE, osc1DcwDepth=0.7, filterModel=DIODE, filterCutoff=1500.0, filterReso=0.5, drive=8.0,
                driveMode=FOLD, driveAutoMakeup=1, octave=2, lfo1Shape=3, lfo1Rate=14.0, lfo1Depth=1.0),
           slot(2, LFO, PITCH, 0.25), slot(3, LFO, CUTOFF, 0.4), slot(4, NRND, D1, 0.4)), 0.0),
        ("laser zap", None, False, "saw with a fast falling pitch envelope, ladder, soft drive, short · laser zap",
         p(dict(osc1DcwDepth=0.9, filterCutoff=8000.0, drive=5.0, driveAutoMakeup=1, octave=4),
           env("filter", 0.001, 0.15, 0.0, 0.1), slot(2, FENV, PITCH, 0.7), env("amp", 0.001, 0.25, 0.0, 0.1)), 0.0),
        ("whoosh transition", None, False, "white noise swept by a slow filter envelope, state filter, clean, wide · whoosh transition",
         p(dict(osc1Level=-60.0, noiseLevel=0.0, filterModel=STATE, filterCutoff=150.0, filterReso=0.4, filterEnvAmount=48.0, driveGain=12.0,
                stereoWidth=0.6), env("filter", 1.2, 1.2, 0.0, 0.8), env("amp", 0.6, 1.6, 0.0, 0.8)), 0.0),
    ]),
]


def file_name(name, given):
    return given if given else name.replace(" ", "_") + ".xml"


def fmt(v):
    if isinstance(v, int):
        return str(v)
    s = repr(float(v))
    return s


def document(settings, trim):
    values = dict(INIT_CLEAN)
    extras = []
    for k, v in settings.items():
        if k in values:
            values[k] = v
        elif k in OPTIONAL:
            extras.append((k, v))
        else:
            raise SystemExit("not a factory id: " + k)
    values["outputGain"] = float(values["outputGain"]) + trim
    lines = ['<?xml version="1.0" encoding="UTF-8"?>', "<PARAMS>"]
    for k, _ in INIT_CLEAN:
        lines.append(f'  <PARAM id="{k}" value="{fmt(values[k])}"/>')
    for k in OPTIONAL:
        for ek, ev in extras:
            if ek == k:
                lines.append(f'  <PARAM id="{k}" value="{fmt(ev)}"/>')
    lines.append("</PARAMS>")
    return "\n".join(lines) + "\n"


def escape(text):
    return text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;").replace('"', "&quot;")


def match_levels(table_path, trim_file, target=-11.0, ceiling=-1.2):
    """Updates the trims from an audition table so that each preset meets the target loudness,
    unless its peak would pass the ceiling first. init clean keeps the values it is given."""
    import re
    import subprocess
    trims = {}
    if os.path.exists(trim_file):
        for line in open(trim_file):
            if line.strip():
                stem, value = line.rsplit(None, 1)
                trims[stem] = float(value)
    stems = {}
    for cid, cname, presets in BANK:
        for name, given, *_ in presets:
            stems[name] = file_name(name, given)[:-4]
    for row in open(table_path).read().splitlines()[1:]:
        m = re.match(r"(.+?)\s+(-?[\d.]+)\s+(-?[\d.]+)\s+(\d+)\s+(-?[\d.]+)$", row)
        name, peak, lufs = m.group(1).strip(), float(m.group(2)), float(m.group(5))
        if name == "init clean":
            continue
        stem = stems[name]
        trims[stem] = round(trims.get(stem, 0.0) + min(target - lufs, ceiling - peak), 1)
    with open(trim_file, "w") as f:
        for stem, value in trims.items():
            f.write(f"{stem} {value}\n")


def main():
    if len(sys.argv) > 2 and sys.argv[1] == "--match":
        match_levels(sys.argv[2], os.path.join(os.path.dirname(__file__), "trims.txt"))
        sys.argv = sys.argv[:1]
    out_dir = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "..", "..", "data", "presets")
    trims = {}
    trim_file = os.path.join(os.path.dirname(__file__), "trims.txt")
    if os.path.exists(trim_file):
        for line in open(trim_file):
            if line.strip():
                stem, value = line.rsplit(None, 1)
                trims[stem] = float(value)
    manifest = ['<?xml version="1.0" encoding="UTF-8"?>', '<presetManifest version="1">']
    count = 0
    for cid, cname, presets in BANK:
        manifest.append(f'  <category id="{cid}" name="{escape(cname)}" displayCount="{len(presets)}">')
        for name, given, flagship, description, settings, trim in presets:
            xml = file_name(name, given)
            stem = xml[:-4]
            extra = "" if name != "init clean" else ""
            with open(os.path.join(out_dir, xml), "w") as f:
                f.write(document(settings, 0.0 if name == "init clean" else trim + trims.get(stem, 0.0)))
            flag = ' flagship="1"' if flagship else ""
            manifest.append(f'    <preset xml="{xml}" displayName="{escape(name)}"{flag}>')
            manifest.append(f"      <description>{escape(description)}</description>")
            manifest.append("    </preset>")
            count += 1
        manifest.append("  </category>")
    manifest.append("</presetManifest>")
    with open(os.path.join(out_dir, "manifest.xml"), "w") as f:
        f.write("\n".join(manifest) + "\n")
    print(f"{count} presets written to {out_dir}")


if __name__ == "__main__":
    main()
