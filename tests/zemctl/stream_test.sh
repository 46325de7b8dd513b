#!/usr/bin/env bash
# zemctl stream and multicast.
source "$(dirname "$0")/support.sh"

orva=($sim --simulator-options '{"cameras":[{"orvaUnit":true}]}')

expect 0 'version:            0x10' "${orva[@]}" stream version
expect 0 'firmware build day: 0x0C1F' "${orva[@]}" stream version
expect 0 'endpoint setting:   0x01' "${orva[@]}" stream version
expect 0 '"version": "0x10"' "${orva[@]}" --json stream version
expect 7 'ORVAAPI_FirmwareBuildDay: the platform reported a failure' "${orva[@]}" \
  --simulator-fault fail@2 stream version
expect 0 'stream: 2' "${orva[@]}" stream select 2
expect 2 'stream' "${orva[@]}" stream select 256
expect 0 'layer: 1' "${orva[@]}" stream layer 1

# What is not given keeps the camera's value.
expect 0 'width:          1280' "${orva[@]}" stream probe
expect 0 'written:        no' "${orva[@]}" stream probe
expect 0 'width:          640' "${orva[@]}" stream probe --width 640
expect 0 'height:         720' "${orva[@]}" stream probe --width 640
expect 0 'written:        yes' "${orva[@]}" stream probe --width 640
expect 0 'stream:         3' "${orva[@]}" stream commit --stream 3 --format 2 --bit-rate 4000000
expect 0 'format:         2' "${orva[@]}" stream commit --stream 3 --format 2 --bit-rate 4000000
expect 0 'bit rate:       4000000' "${orva[@]}" stream commit --stream 3 --format 2 --bit-rate 4000000
expect 0 'frame interval: 666666' "${orva[@]}" stream commit --interval 666666
expect 0 '"height": 480' "${orva[@]}" --json stream commit --height 480
expect 7 'ORVAAPI_StreamFormatProbeCommit' "${orva[@]}" --simulator-fault fail@2 stream probe --width 1
expect 2 '"stream" is not whole' "${orva[@]}" stream

# Without the unit nothing is tried.
for command in version 'select 1' probe commit 'layer 1'; do
  expect 8 'the camera has no orva extension unit' $sim stream $command
done

expect 0 'stream: 5' $sim multicast select 5
expect 0 'layer: 6' $sim multicast layer 6
expect 0 'high:   2047' $sim multicast commit 1 1280 720 --low 31 --high 2047
expect 0 '"low": 31' $sim --json multicast commit 1 1280 720 --low 31
expect 2 'low' $sim multicast commit 1 1280 720 --low 32
expect 2 'high' $sim multicast commit 1 1280 720 --high 2048
expect 2 'height is required' $sim multicast commit 1 1280
expect 5 'the camera refused the command' $sim --simulator-fault refuse@2 multicast commit 1 2 3
expect 7 'ZEMAPI_MulticastStreamID' $sim --simulator-fault fail@1 multicast select 1
expect 7 'ZEMAPI_MulticasToggleLayer' $sim --simulator-fault fail@1 multicast layer 1
