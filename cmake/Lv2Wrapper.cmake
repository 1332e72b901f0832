# JUCE 7.0.5's LV2 wrapper gets three things wrong for this instrument, so the LV2 target builds a
# corrected copy of it, made here from the installed module at configure time:
#  - it writes every parameter's range in real units but the scale points of choice and switch
#    parameters on a 0..1 scale, so a host that lists them sends wrong values ("square" as 0.111);
#  - it writes `foaf:mbox <>`, an empty address, when the plug-in has no e-mail;
#  - it reports parameter values to the host only when they change, so a host that shows the LV2
#    parameters starts every one of them at 0 after loading or reopening a session. The copy
#    announces all values on instantiation, after a state restore and when the host asks (patch:Get).
# Each correction names the exact text it replaces; a JUCE whose wrapper differs stops the
# configure here rather than building an uncorrected plug-in.
set(_lv2_source "${JUCE_MODULES_DIR}/juce_audio_plugin_client/LV2/juce_LV2_Client.cpp")
if(NOT EXISTS "${_lv2_source}")
    message(FATAL_ERROR "JUCE's LV2 wrapper is not at ${_lv2_source}")
endif()
file(READ "${_lv2_source}" _lv2)

function(_lv2_patch before after)
    string(FIND "${_lv2}" "${before}" _at)
    if(_at EQUAL -1)
        message(FATAL_ERROR "JUCE's LV2 wrapper has changed: cannot find\n${before}")
    endif()
    string(REPLACE "${before}" "${after}" _patched "${_lv2}")
    set(_lv2 "${_patched}" PARENT_SCOPE)
endfunction()

# Scale points in the parameter's own units, as its range is.
_lv2_patch([[
                    const auto value = (float) i / (float) maxIndex;
                    const auto text = param.getText (value, 1024);
]] [[
                    const auto normalised = (float) i / (float) maxIndex;
                    const auto text = param.getText (normalised, 1024);
                    const auto* ranged = dynamic_cast<const RangedAudioParameter*> (&param);
                    const auto value = ranged != nullptr ? ranged->convertFrom0to1 (normalised) : normalised;
]])

# No e-mail field rather than an empty one.
_lv2_patch([[
              "\t\tfoaf:mbox <" JucePlugin_ManufacturerEmail "> ;\n"
]] "")

# Every value is announced: at instantiation, after a restore, and on the host's patch:Get.
_lv2_patch([[
        processor.addListener (this);
    }

    ~ParameterStorage() override
]] [[
        processor.addListener (this);
        announceAll();
    }

    void announceAll()
    {
        for (auto* param : legacyParameters)
            stateCache.setValueAndBits ((size_t) param->getParameterIndex(), param->getValue(), newClientValue);
    }

    ~ParameterStorage() override
]])
_lv2_patch([[
            patchSetHelper.processPatchSet (event, Callback { *this });
]] [[
            patchSetHelper.processPatchSet (event, Callback { *this });

            if (event->body.type == mLV2_ATOM__Object
                && reinterpret_cast<const LV2_Atom_Object*> (&event->body)->body.otype == mLV2_PATCH__Get)
                parameters.announceAll();
]])
_lv2_patch([[
        processor->setStateInformation (block.getData(), (int) block.getSize());

        return LV2_STATE_SUCCESS;
]] [[
        processor->setStateInformation (block.getData(), (int) block.getSize());
        parameters.announceAll();

        return LV2_STATE_SUCCESS;
]])
_lv2_patch([[
    X (LV2_ATOM__String)
]] [[
    X (LV2_ATOM__String)
    X (LV2_ATOM__Object)
    X (LV2_PATCH__Get)
]])

set(_lv2_copy "${CMAKE_BINARY_DIR}/lv2-wrapper/juce_audio_plugin_client_LV2.cpp")
# Written only when it differs, so that a configure alone rebuilds nothing.
file(WRITE "${_lv2_copy}.new" "${_lv2}")
execute_process(COMMAND ${CMAKE_COMMAND} -E copy_if_different "${_lv2_copy}.new" "${_lv2_copy}")
set_property(SOURCE "${_lv2_copy}" PROPERTY SKIP_PRECOMPILE_HEADERS ON)
set_property(TARGET juce_audio_plugin_client_LV2 PROPERTY INTERFACE_SOURCES "${_lv2_copy}")
