// What is wrong with what a player saw.

const bitOfTime = 0.05; // seconds

export function faultsOf(seen) {
    const faults = seen.errors.map((error) => `the player complains: ${error}`);
    const demand = (isRight, fault) => isRight || faults.push(fault);
    const isNear = (left, right) => Math.abs(left - right) <= bitOfTime;

    demand(seen.ended, `it stopped at ${seen.currentTime} s`);
    if (seen.ended) {
        demand(isNear(seen.currentTime, seen.duration), `the end came at ${seen.currentTime} s of ${seen.duration} s`);
    }
    demand(isNear(seen.duration, seen.listedDuration), `${seen.duration} s long, ${seen.listedDuration} s by the list`);
    if (seen.resolution) {
        demand(`${seen.width}x${seen.height}` === seen.resolution, `pictures of ${seen.width}x${seen.height}`);
        demand(seen.decodedPictures > 0, 'no picture was decoded');
    }
    if (seen.audioTrack) {
        demand(seen.decodedSound > 0, 'no sound was decoded');
    }
    for (const [stream, ranges] of Object.entries(seen.buffered)) {
        demand(ranges.length === 1, `${stream} has holes: ${JSON.stringify(ranges)}`);
        demand(isNear(ranges[0]?.[0], 0), `${stream} begins at ${ranges[0]?.[0]} s`);
        demand(isNear(ranges.at(-1)?.[1], seen.listedDuration), `${stream} ends at ${ranges.at(-1)?.[1]} s`);
    }
    return faults;
}
