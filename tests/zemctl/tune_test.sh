#!/usr/bin/env bash
# zemctl tune: every feature.
source "$(dirname "$0")/support.sh"

expect 0 'build date: 2024.Mar.05' $sim tune build-date
expect 0 'serial number: a0 a1 a2 a3' $sim tune sensor-sn
expect 0 'values:  [256,257,258,259,260,261,262,263,264]' $sim tune focus-values
expect 0 'written: yes' $sim tune af 1
expect 0 'written: yes' $sim tune ae 0
expect 0 'written: yes' $sim tune manual-gain 1
expect 0 'written: yes' $sim tune manual-gain 0
expect 0 'values:  [256,256,256]' $sim tune awb-gain
expect 0 'values:  [258,772,1286]' $sim tune awb-gain 0x0102 0x0304 0x0506
expect 0 'written: yes' $sim tune shading 3
expect 0 'written: yes' $sim tune effect 3
expect 0 'values:  [0,0,0,0,0,0]' $sim tune misc
expect 0 'values:  [1,2,3,4,5,6]' $sim tune misc 1 2 3 4 5 6
expect 0 'written: yes' $sim tune mjpg-quality
expect 0 'written: yes' $sim tune max-qp 40
expect 0 'written: yes' $sim tune min-qp 20
expect 0 'written: yes' $sim tune video-rec-mode 2
expect 0 'version: 0x12' $sim --simulator-options '{"cameras":[{"skypeUnit":true,"skypeVersion":19}]}' \
  tune skype-version
expect 0 'version: 0x15' $sim --simulator-options '{"cameras":[{"skypeUnit":true,"skypeVersion":21}]}' \
  tune skype-version
expect 8 'ZEMAPI_GetSkypeXUVersion: the camera has no skype extension unit' $sim tune skype-version
expect 0 '"feature": "max-qp"' $sim --json tune max-qp 40
expect 2 'af takes 1 value' $sim tune af
expect 2 'awb-gain takes 3 values' $sim tune awb-gain 1 2
expect 2 'values of af end at 255' $sim tune af 256
expect 2 'values of manual-gain end at 1' $sim tune manual-gain 2
expect 2 '"tune" is not whole; behind it comes one of af, ae, ' $sim tune
expect 5 'ZEMAPI_EnableAF: the camera refused the command' $sim --simulator-fault refuse@2=5 tune af 1
expect 7 'ZEMAPI_SetShadding: the platform reported a failure (platform failure, 0x8007001F)' $sim \
  --simulator-fault fail@1 tune shading 1
expect 5 'ZEMAPI_EnableManualGainCtrl' $sim --simulator-options '{"cameras":[{"videoControls":false}]}' \
  tune manual-gain 1
expect 3 'no camera matches' tune af 1
